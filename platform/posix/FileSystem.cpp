// Status, links, surroundings and changes of the catalog.
#include "platform/posix/FileSystem.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "platform/posix/PosixSupport.h"
#include "platform/posix/SystemCall.h"
#include "platform/posix/UniqueFd.h"

namespace osa::posix {
namespace {

Time timeFrom(const struct statx_timestamp& stamp) {
    return {stamp.tv_sec, stamp.tv_nsec};
}

FileStatus statusFrom(const struct statx& raw) {
    FileStatus status;
    status.device = makedev(raw.stx_dev_major, raw.stx_dev_minor);
    status.inode = raw.stx_ino;
    status.mode = raw.stx_mode;
    status.uid = raw.stx_uid;
    status.gid = raw.stx_gid;
    status.links = raw.stx_nlink;
    status.size = raw.stx_size;
    status.modified = timeFrom(raw.stx_mtime);
    status.changed = timeFrom(raw.stx_ctime);
    status.accessed = timeFrom(raw.stx_atime);
    status.keepsCreated = (raw.stx_mask & STATX_BTIME) != 0;
    status.created = status.keepsCreated
                         ? timeFrom(raw.stx_btime)
                         : std::min({status.modified, status.changed, status.accessed});
    return status;
}

Result<FileStatus> statusAt(int folder, const char* path, int flags) {
    struct statx raw {};
    const int failed = systemCall(
        [&] { return statx(folder, path, flags, STATX_BASIC_STATS | STATX_BTIME, &raw); });
    if (failed != 0) return lastError();
    return statusFrom(raw);
}

}  // namespace

bool FileStatus::isFolder() const {
    return S_ISDIR(mode);
}
bool FileStatus::isSymbolicLink() const {
    return S_ISLNK(mode);
}
bool FileStatus::isRegular() const {
    return S_ISREG(mode);
}

std::uint32_t FileStatus::birth() const {
    if (!keepsCreated) return 0;
    return static_cast<std::uint32_t>(created.seconds) * 1'000'000'007u ^ created.nanoseconds;
}

UniqueFd::~UniqueFd() {
    if (descriptor_ >= 0) ::close(descriptor_);
}

Time now() {
    struct timespec time {};
    clock_gettime(CLOCK_REALTIME, &time);
    return {time.tv_sec, static_cast<std::uint32_t>(time.tv_nsec)};
}

bool isSettled(Time date, Time observed) {
    constexpr std::int64_t kCoarseClock = 20'000'000;
    const std::int64_t seconds = observed.seconds - date.seconds;
    if (seconds < 0) return false;
    if (seconds > 1) return true;
    return seconds * 1'000'000'000 + observed.nanoseconds - date.nanoseconds >= kCoarseClock;
}

Result<FileStatus> status(const std::string& path, Follow follow) {
    if (!isUsablePath(path)) return Failure(statusFromErrno(ENOENT));
    return statusAt(AT_FDCWD, path.c_str(), follow == Follow::yes ? 0 : AT_SYMLINK_NOFOLLOW);
}

Result<FileStatus> statusOfDescriptor(int descriptor) {
    return statusAt(descriptor, "", AT_EMPTY_PATH);
}

bool isUsablePath(const std::string& path) {
    return path.find('\0') == std::string::npos;
}

Result<std::string> readLink(const std::string& path) {
    std::string target(PATH_MAX, '\0');
    const ssize_t length =
        systemCall([&] { return readlink(path.c_str(), target.data(), target.size()); });
    if (length < 0) return lastError();
    target.resize(static_cast<std::size_t>(length));
    return target;
}

Result<std::string> realPath(const std::string& path) {
    if (!isUsablePath(path)) return Failure(statusFromErrno(ENOENT));
    char* resolved = nullptr;
    if (systemCall(
            [&] { return (resolved = realpath(path.c_str(), nullptr)) == nullptr ? -1 : 0; })) {
        return lastError();
    }
    std::string result(resolved);
    std::free(resolved);
    return result;
}

std::string currentFolder() {
    char buffer[PATH_MAX];
    return getcwd(buffer, sizeof buffer) == nullptr ? "/" : buffer;
}

std::string environment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

std::uint32_t processID() {
    return static_cast<std::uint32_t>(getpid());
}

std::uint32_t userID() {
    return getuid();
}

std::string homeFolder() {
    char buffer[4096];
    struct passwd entry {};
    struct passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer, sizeof buffer, &found) != 0 || found == nullptr)
        return {};
    return entry.pw_dir;
}

Result<void> changeMode(const std::string& path, std::uint32_t mode) {
    if (systemCall([&] { return chmod(path.c_str(), mode & 07777); }) != 0) {
        return lastError(Intent::changeCatalog);
    }
    return {};
}

Result<void> createFolder(const std::string& path, std::uint32_t mode) {
    if (!isUsablePath(path)) return Failure(statusFromErrno(ENOENT));
    if (systemCall([&] { return mkdir(path.c_str(), mode); }) != 0) {
        return lastError(Intent::changeCatalog);
    }
    return {};
}

Result<void> remove(const std::string& path) {
    if (systemCall([&] { return ::remove(path.c_str()); }) != 0) {
        return lastError(Intent::changeCatalog);
    }
    return {};
}

Result<void> rename(const std::string& from, const std::string& to) {
    if (systemCall([&] { return ::rename(from.c_str(), to.c_str()); }) != 0) {
        return lastError(Intent::changeCatalog);
    }
    return {};
}

}  // namespace osa::posix
