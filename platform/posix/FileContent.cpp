// Reading and writing the content of files.
#include <CoreServices/MacErrors.h>
#include <fcntl.h>
#include <unistd.h>

#include "platform/posix/FileSystem.h"
#include "platform/posix/PosixSupport.h"
#include "platform/posix/SystemCall.h"
#include "platform/posix/UniqueFd.h"

namespace osa::posix {
namespace {

class DescriptorFile : public OpenedFile {
  public:
    DescriptorFile(UniqueFd descriptor, const FileStatus& status)
        : descriptor_(std::move(descriptor)), status_(status) {}

    std::uint64_t size() const override { return status_.size; }
    const FileStatus& status() const override { return status_; }

    Result<void> readExactly(std::uint64_t offset, std::span<std::byte> target) const override {
        if (!CheckedRange{offset, target.size()}.fits(size())) return Failure(eofErr);
        return readAllAt(descriptor_.get(), offset, target);
    }

  private:
    UniqueFd descriptor_;
    FileStatus status_;
};

}  // namespace

Result<std::shared_ptr<const OpenedFile>> openFile(const std::string& path, Follow follow) {
    if (!isUsablePath(path)) return Failure(fnfErr);
    // Without O_NONBLOCK a named pipe would hold the caller until somebody writes to it.
    const int flags =
        O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | (follow == Follow::no ? O_NOFOLLOW : 0);
    UniqueFd descriptor(systemCall([&] { return open(path.c_str(), flags); }));
    if (!descriptor.valid()) {
        if (errno == ELOOP || errno == ENXIO) return Failure(notAFileErr);
        return lastError();
    }
    OSA_TRY(const FileStatus status, statusOfDescriptor(descriptor.get()));
    if (!status.isRegular()) return Failure(notAFileErr);
    return std::shared_ptr<const OpenedFile>(
        std::make_shared<DescriptorFile>(std::move(descriptor), status));
}

Result<std::shared_ptr<const ByteSource>> openSource(const std::string& path) {
    OSA_TRY(std::shared_ptr<const ByteSource> file, openFile(path, Follow::yes));
    return file;
}

Result<std::vector<std::byte>> readFile(const std::string& path, std::uint64_t limit) {
    OSA_TRY(const auto file, openFile(path, Follow::yes));
    if (file->size() > limit) return Failure(fileBoundsErr);
    std::vector<std::byte> content(file->size());
    OSA_CHECK(file->readExactly(0, content));
    return content;
}

Result<FileStatus> createFile(const std::string& path, std::uint32_t mode) {
    if (!isUsablePath(path)) return Failure(fnfErr);
    const UniqueFd descriptor(systemCall(
        [&] { return open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode); }));
    if (!descriptor.valid()) return lastError(Intent::changeCatalog);
    auto status = statusOfDescriptor(descriptor.get());
    // No fault point: without its status nobody learns of the file.
    if (!status.ok()) ::unlink(path.c_str());
    return status;
}

Result<void> writeFile(const std::string& path, ByteSpan content) {
    if (!isUsablePath(path)) return Failure(fnfErr);
    const UniqueFd descriptor(systemCall(
        [&] { return open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666); }));
    if (!descriptor.valid()) return lastError(Intent::write);
    return writeAll(descriptor.get(), content);
}

Result<void> synchronise(const std::string& path) {
    if (!isUsablePath(path)) return Failure(fnfErr);
    const auto open = [&](int access) {
        const int flags = access | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW;
        return UniqueFd(systemCall([&] { return ::open(path.c_str(), flags); }));
    };
    UniqueFd descriptor = open(O_RDONLY);
    if (!descriptor.valid() && errno == EACCES) descriptor = open(O_WRONLY);
    if (!descriptor.valid()) return lastError(Intent::write);
    if (systemCall([&] { return fsync(descriptor.get()); }) != 0) return lastError(Intent::write);
    return {};
}

Result<void> readAllAt(int descriptor, std::uint64_t offset, std::span<std::byte> target) {
    while (!target.empty()) {
        const ssize_t count = systemCall([&] {
            return pread(descriptor, target.data(), target.size(), static_cast<off_t>(offset));
        });
        if (count < 0) return lastError();
        if (count == 0) return Failure(eofErr);  // cut short since its size was asked for
        offset += static_cast<std::uint64_t>(count);
        target = target.subspan(static_cast<std::size_t>(count));
    }
    return {};
}

Result<void> writeAll(int descriptor, ByteSpan content) {
    while (!content.empty()) {
        const ssize_t count =
            systemCall([&] { return write(descriptor, content.data(), content.size()); });
        if (count < 0) return lastError(Intent::write);
        content = content.subspan(static_cast<std::size_t>(count));
    }
    return {};
}

}  // namespace osa::posix
