// Changes of names.
#include "platform/posix/CatalogChanges.h"

#include <CoreServices/MacErrors.h>
#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <new>

#include "platform/posix/PosixSupport.h"
#include "platform/posix/SystemCall.h"

namespace osa::posix {
namespace {

constexpr int kMostNames = 100;

/// renameat2 is not for every file system.
bool isFlagUnknown(int error) {
    return error == EINVAL || error == ENOSYS || error == EOPNOTSUPP;
}

/// The new name first and then the old one gone: a file is never without one.
Result<void> renameByLink(const std::string& from, const std::string& to) {
    OSA_CHECK(addName(from, to));
    const auto removed = remove(from);
    if (!removed.ok()) discard(to);
    return removed;
}

Result<void> renameByLooking(const std::string& from, const std::string& to) {
    const auto there = status(to, Follow::no);
    if (there.ok()) return Failure(dupFNErr);
    if (there.status() != fnfErr) return Failure(there.status());
    return rename(from, to);
}

Result<std::string> randomName() {
    static constexpr char kLetters[] = "abcdefghijklmnopqrstuvwxyz012345";
    unsigned char random[6];
    if (systemCall([&] { return getrandom(random, sizeof random, 0); }) < 0) return lastError();
    std::string name = "._.";
    for (const unsigned char byte : random) name += kLetters[byte % 32];
    return name;
}

}  // namespace

Result<void> renameToFree(const std::string& from, const std::string& to) {
    if (!isUsablePath(from) || !isUsablePath(to)) return Failure(fnfErr);
    const int failed = systemCall(
        [&] { return renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE); });
    if (failed == 0) return {};
    if (!isFlagUnknown(errno)) return lastError(Intent::changeCatalog);
    const auto linked = renameByLink(from, to);
    if (linked.ok() || linked.status() == dupFNErr) return linked;
    return renameByLooking(from, to);
}

Result<void> exchangeNames(const std::string& one, const std::string& other) {
    if (!isUsablePath(one) || !isUsablePath(other)) return Failure(fnfErr);
    const int failed = systemCall(
        [&] { return renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE); });
    if (failed == 0) return {};
    if (!isFlagUnknown(errno)) return lastError(Intent::changeCatalog);
    OSA_TRY(const std::string aside, moveAside(one));
    const auto first = renameToFree(other, one);
    if (!first.ok()) {
        putBack(aside, one);
        return first;
    }
    const auto second = renameToFree(aside, other);
    if (second.ok()) return {};
    putBack(one, other);
    putBack(aside, one);
    return second;
}

Result<void> addName(const std::string& file, const std::string& name) {
    if (systemCall([&] { return link(file.c_str(), name.c_str()); }) == 0) return {};
    return lastError(Intent::changeCatalog);
}

Result<std::string> moveAside(const std::string& path) {
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    for (int left = kMostNames;; --left) {
        OSA_TRY(const std::string name, randomName());
        const auto moved = renameToFree(path, folder + name);
        if (moved.ok()) return folder + name;
        if (moved.status() != dupFNErr || left == 0) return Failure(moved.status());
    }
}

Result<void> setDates(const std::string& path, std::optional<Time> modified,
                      std::optional<Time> accessed) {
    const auto stamp = [](const std::optional<Time>& time) {
        if (!time) return timespec{0, UTIME_OMIT};
        return timespec{time->seconds, static_cast<long>(time->nanoseconds)};
    };
    const struct timespec dates[2] = {stamp(accessed), stamp(modified)};
    const int failed =
        systemCall([&] { return utimensat(AT_FDCWD, path.c_str(), dates, AT_SYMLINK_NOFOLLOW); });
    if (failed != 0) return lastError(Intent::changeCatalog);
    return {};
}

void putBackDates(const std::string& path, Time modified, Time accessed) {
    const auto stamp = [](Time time) {
        return timespec{time.seconds, static_cast<long>(time.nanoseconds)};
    };
    const struct timespec dates[2] = {stamp(accessed), stamp(modified)};
    (void)utimensat(AT_FDCWD, path.c_str(), dates, AT_SYMLINK_NOFOLLOW);
}

void putBackMode(const std::string& path, std::uint32_t mode) {
    (void)chmod(path.c_str(), mode & 07777);
}

void putBackAttribute(const std::string& path, const char* name, ByteSpan value) {
    (void)lsetxattr(path.c_str(), name, value.data(), value.size(), 0);
}

Result<void> mayWrite(const std::string& path) {
    if (systemCall([&] { return faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS); }) == 0) {
        return {};
    }
    return lastError(Intent::write);
}

void putBack(const std::string& from, const std::string& to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return;
    struct stat there {};
    if (!isFlagUnknown(errno) || lstat(to.c_str(), &there) == 0) return;
    (void)::rename(from.c_str(), to.c_str());
}

void exchangeBack(const std::string& one, const std::string& other) {
    if (renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE) == 0) return;
    const std::string aside = one.substr(0, one.rfind('/') + 1) + "._.exchange";
    putBack(one, aside);
    putBack(other, one);
    putBack(aside, other);
}

void takeBackName(const std::string& file, const std::string& name) {
    struct stat first {};
    struct stat second {};
    if (lstat(name.c_str(), &second) != 0) return;
    if (lstat(file.c_str(), &first) != 0) {
        putBack(name, file);
    } else if (first.st_dev == second.st_dev && first.st_ino == second.st_ino) {
        discard(name);
    }
}

void discard(const std::string& path) {
    (void)::remove(path.c_str());
}

void discardTree(const std::string& path) {
    try {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    } catch (const std::bad_alloc&) {
        return;  // it stays, and nobody sees it
    }
}

}  // namespace osa::posix
