// Changing files in place.
#include "platform/posix/WritableFile.h"

#include <CoreServices/MacErrors.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

#include "platform/posix/PosixSupport.h"
#include "platform/posix/SystemCall.h"
#include "platform/posix/UniqueFd.h"

namespace osa::posix {
namespace {

class WritableDescriptor : public WritableFile {
  public:
    explicit WritableDescriptor(UniqueFd descriptor) : descriptor_(std::move(descriptor)) {}

    Result<FileStatus> status() const override { return statusOfDescriptor(descriptor_.get()); }

    Result<void> readExactly(std::uint64_t offset, std::span<std::byte> target) const override {
        return readAllAt(descriptor_.get(), offset, target);
    }

    Result<void> write(std::uint64_t offset, ByteSpan bytes, std::uint64_t& done) override {
        done = 0;
        while (done < bytes.size()) {
            const ssize_t count = systemCall([&] {
                return pwrite(descriptor_.get(), bytes.data() + done, bytes.size() - done,
                              static_cast<off_t>(offset + done));
            });
            if (count < 0) return lastError(Intent::write);
            done += static_cast<std::uint64_t>(count);
        }
        return {};
    }

    Result<void> setSize(std::uint64_t size) override {
        return check([&] { return ftruncate(descriptor_.get(), static_cast<off_t>(size)); });
    }

    Result<void> synchronise() override {
        return check([&] { return fsync(descriptor_.get()); });
    }

    Result<void> close() override {
        const int descriptor = descriptor_.release();
        // The descriptor is gone whatever the answer, so no fault point and no second try.
        if (descriptor < 0 || ::close(descriptor) == 0 || errno == EINTR) return {};
        return lastError(Intent::write);
    }

  private:
    template <typename Call>
    static Result<void> check(Call call) {
        if (systemCall(call) != 0) return lastError(Intent::write);
        return {};
    }

    UniqueFd descriptor_;
};

Result<UniqueFd> unnamedFile(const std::string& folder) {
    UniqueFd descriptor(
        systemCall([&] { return open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600); }));
    if (descriptor.valid()) return descriptor;
    // Not for every file system.
    std::string path = folder + "/osa-XXXXXX";
    descriptor = UniqueFd(systemCall([&] { return mkostemp(path.data(), O_CLOEXEC); }));
    if (!descriptor.valid()) return lastError(Intent::changeCatalog);
    ::unlink(path.c_str());
    return descriptor;
}

}  // namespace

Result<std::unique_ptr<WritableFile>> WritableFile::open(const std::string& path, Access access) {
    if (!isUsablePath(path)) return Failure(fnfErr);
    // As for reading: no waiting for a named pipe's other end.
    const int flags = (access == Access::writing ? O_WRONLY : O_RDWR) | O_CLOEXEC | O_NONBLOCK |
                      O_NOCTTY | O_NOFOLLOW;
    UniqueFd descriptor(systemCall([&] { return ::open(path.c_str(), flags); }));
    if (!descriptor.valid()) {
        if (errno == ELOOP || errno == ENXIO) return Failure(notAFileErr);
        return lastError(Intent::write);
    }
    OSA_TRY(const FileStatus status, statusOfDescriptor(descriptor.get()));
    if (!status.isRegular()) return Failure(notAFileErr);
    return std::unique_ptr<WritableFile>(
        std::make_unique<WritableDescriptor>(std::move(descriptor)));
}

Result<std::unique_ptr<WritableFile>> WritableFile::temporary() {
    const std::string wanted = environment("TMPDIR");
    OSA_TRY(UniqueFd descriptor, unnamedFile(wanted.starts_with('/') ? wanted : "/tmp"));
    return std::unique_ptr<WritableFile>(
        std::make_unique<WritableDescriptor>(std::move(descriptor)));
}

}  // namespace osa::posix
