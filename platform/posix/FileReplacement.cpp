// Replacing a file's content in one step.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "platform/posix/FileSystem.h"
#include "platform/posix/PosixSupport.h"
#include "platform/posix/SystemCall.h"
#include "platform/posix/UniqueFd.h"

namespace osa::posix {
namespace {

constexpr std::uint64_t kChunk = 65536;

/// A new file beside another, under a name of its own until it takes the other's.
class TemporaryFile {
  public:
    explicit TemporaryFile(const std::string& target)
        : target_(target), path_(target.substr(0, target.rfind('/') + 1) + "._.XXXXXX") {}
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        // No fault point: whatever made the work fail, this is tried.
        if (descriptor_.valid()) ::unlink(path_.c_str());
    }

    Result<void> create() {
        descriptor_ = UniqueFd(systemCall([this] {
            path_.replace(path_.size() - 6, 6, "XXXXXX");
            return mkostemp(path_.data(), O_CLOEXEC);
        }));
        if (!descriptor_.valid()) return lastError(Intent::changeCatalog);
        return {};
    }

    Result<void> fill(const ByteSource& content) {
        std::vector<std::byte> chunk(std::min(content.size(), kChunk));
        for (std::uint64_t offset = 0; offset < content.size(); offset += chunk.size()) {
            chunk.resize(std::min(content.size() - offset, kChunk));
            OSA_CHECK(content.readExactly(offset, chunk));
            OSA_CHECK(writeAll(descriptor_.get(), chunk));
        }
        return {};
    }

    Result<void> resemble(const FileStatus& like) {
        // Only some may give files away; who may not, owns the new file.
        (void)systemCall([&] { return fchown(descriptor_.get(), like.uid, like.gid); });
        if (systemCall([&] { return fchmod(descriptor_.get(), like.mode & 0777); }) != 0) {
            return lastError(Intent::changeCatalog);
        }
        return {};
    }

    Result<void> takePlace() {
        if (systemCall([&] { return fsync(descriptor_.get()); }) != 0) {
            return lastError(Intent::write);
        }
        OSA_CHECK(rename(path_, target_));
        descriptor_ = UniqueFd();
        return {};
    }

  private:
    const std::string& target_;  // weak
    std::string path_;
    UniqueFd descriptor_;
};

}  // namespace

Result<void> replaceFile(const std::string& path, const ByteSource& content,
                         const FileStatus& like) {
    if (!isUsablePath(path)) return Failure(statusFromErrno(ENOENT));
    TemporaryFile file(path);
    OSA_CHECK(file.create());
    OSA_CHECK(file.fill(content));
    OSA_CHECK(file.resemble(like));
    return file.takePlace();
}

}  // namespace osa::posix
