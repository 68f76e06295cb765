// Replacing a file's content in one step.
#include <CoreServices/MacErrors.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "platform/posix/CatalogChanges.h"
#include "platform/posix/FileSystem.h"
#include "platform/posix/PosixSupport.h"
#include "platform/posix/SystemCall.h"
#include "platform/posix/UniqueFd.h"

namespace osa::posix {
namespace {

constexpr std::uint64_t kChunk = 65536;

/// Whether a mode gives the group other rights to read and write than everybody else.
bool tellsGroupFromOthers(std::uint32_t mode) {
    return ((mode >> 3) & 6) != (mode & 6);
}

/// The folder of a file, so that a change of its names can be made to last.
class NamesOfFolder {
  public:
    explicit NamesOfFolder(const std::string& file)
        : path_(file.substr(0, std::max<std::size_t>(file.rfind('/'), 1))) {}

    Result<void> open() {
        descriptor_ = UniqueFd(systemCall(
            [this] { return ::open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
        // One that may be written but not read cannot be synchronised.
        if (!descriptor_.valid() && errno != EACCES) return lastError(Intent::changeCatalog);
        return {};
    }
    /// That it fails is kept quiet: the new content is in place for everybody who looks, and a
    /// failure would say that it is not.
    void synchronise() {
        if (descriptor_.valid()) (void)systemCall([this] { return fsync(descriptor_.get()); });
    }

  private:
    std::string path_;
    UniqueFd descriptor_;
};

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

    Result<void> takeAttributes() { return copyAttributes(target_, descriptor_.get()); }

    Result<void> resemble(const FileStatus& like) {
        OSA_TRY(FileStatus made, statusOfDescriptor(descriptor_.get()));
        if (made.uid != like.uid || made.gid != like.gid) {
            giveTo(like);
            OSA_TRY(made, statusOfDescriptor(descriptor_.get()));
        }
        // It stays with its maker, who could read the old one to copy it; but another group's
        // members would come under the group's rights, and the old group's under the others'.
        if (made.gid != like.gid && tellsGroupFromOthers(like.mode))
            return Failure(afpAccessDenied);
        return setMode(made.mode & 0777, like.mode & 0777);
    }

    Result<void> takePlace(bool mayReplace) {
        if (systemCall([&] { return fsync(descriptor_.get()); }) != 0) {
            return lastError(Intent::write);
        }
        NamesOfFolder names(path_);
        OSA_CHECK(names.open());
        OSA_CHECK(mayReplace ? rename(path_, target_) : renameToFree(path_, target_));
        descriptor_ = UniqueFd();
        names.synchronise();
        return {};
    }

  private:
    /// Only some may give files away, but all may give theirs to a group of their own.
    void giveTo(const FileStatus& like) {
        const int given = systemCall([&] { return fchown(descriptor_.get(), like.uid, like.gid); });
        if (given == 0) return;
        constexpr uid_t kSameOwner = ~uid_t{0};
        (void)systemCall([&] { return fchown(descriptor_.get(), kSameOwner, like.gid); });
    }

    Result<void> setMode(std::uint32_t made, std::uint32_t wanted) {
        if (made == wanted) return {};
        if (systemCall([&] { return fchmod(descriptor_.get(), wanted); }) == 0) return {};
        // Some volumes give all files one mode, which does if it lets nobody in who should not be.
        const bool fits = (made & ~wanted & 0666) == 0;
        if (errno == EPERM && fits) return {};
        return lastError(Intent::changeCatalog);
    }

    const std::string& target_;  // weak
    std::string path_;
    UniqueFd descriptor_;
};

Result<void> place(const std::string& path, const ByteSource& content, const FileStatus& like,
                   bool mayReplace) {
    if (!isUsablePath(path)) return Failure(statusFromErrno(ENOENT));
    TemporaryFile file(path);
    OSA_CHECK(file.create());
    OSA_CHECK(file.fill(content));
    if (mayReplace) OSA_CHECK(file.takeAttributes());
    OSA_CHECK(file.resemble(like));
    return file.takePlace(mayReplace);
}

}  // namespace

Result<void> replaceFile(const std::string& path, const ByteSource& content,
                         const FileStatus& like) {
    return place(path, content, like, true);
}

Result<void> createFileWith(const std::string& path, const ByteSource& content,
                            const FileStatus& like) {
    return place(path, content, like, false);
}

}  // namespace osa::posix
