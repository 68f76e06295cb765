// Reading the names in a folder.
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstring>

#include "platform/posix/FileSystem.h"
#include "platform/posix/PosixSupport.h"
#include "platform/posix/SystemCall.h"
#include "platform/posix/UniqueFd.h"

namespace osa::posix {

struct DirectoryReader::Stream {
    DIR* directory = nullptr;
    ~Stream() {
        if (directory != nullptr) closedir(directory);
    }
};

DirectoryReader::DirectoryReader(std::unique_ptr<Stream> stream) : stream_(std::move(stream)) {}
DirectoryReader::DirectoryReader(DirectoryReader&&) noexcept = default;
DirectoryReader& DirectoryReader::operator=(DirectoryReader&&) noexcept = default;
DirectoryReader::~DirectoryReader() = default;

Result<DirectoryReader> DirectoryReader::open(const std::string& path, Follow follow) {
    if (!isUsablePath(path)) return Failure(statusFromErrno(ENOENT));
    const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | (follow == Follow::no ? O_NOFOLLOW : 0);
    const int descriptor = systemCall([&] { return ::open(path.c_str(), flags); });
    if (descriptor < 0) return lastError();
    auto stream = std::make_unique<Stream>();
    stream->directory = fdopendir(descriptor);
    if (stream->directory == nullptr) {
        const Failure failure = lastError();
        ::close(descriptor);
        return failure;
    }
    return DirectoryReader(std::move(stream));
}

Result<std::string> DirectoryReader::next() {
    for (;;) {
        const struct dirent* entry = nullptr;
        errno = 0;
        const int failed = systemCall([&] {
            entry = readdir(stream_->directory);
            return entry == nullptr && errno != 0 ? -1 : 0;
        });
        if (failed != 0) return lastError();
        if (entry == nullptr) return std::string();
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) {
            return std::string(entry->d_name);
        }
    }
}

}  // namespace osa::posix
