// Writing the new content, changing places with the old, and back.
#include "platform/posix/FileReplacement.h"

#include <CoreServices/MacErrors.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <utility>

#include "platform/posix/CatalogChanges.h"
#include "platform/posix/PosixSupport.h"
#include "platform/posix/SystemCall.h"

namespace osa::posix {
namespace {

constexpr std::uint64_t kChunk = 65536;

/// Whether a mode gives the group other rights to read and write than everybody else.
bool tellsGroupFromOthers(std::uint32_t mode) {
    return ((mode >> 3) & 6) != (mode & 6);
}

std::string folderOf(const std::string& file) {
    return file.substr(0, std::max<std::size_t>(file.rfind('/'), 1));
}

}  // namespace

FileReplacement::FileReplacement(const std::string& path, const FileStatus& like, bool isNew)
    : target_(path),
      like_(like),
      isNew_(isNew),
      beside_(path.substr(0, path.rfind('/') + 1) + "._.XXXXXX") {}

FileReplacement::~FileReplacement() {
    if (stage_ == Stage::waiting || stage_ == Stage::oldIsBeside) ::unlink(beside_.c_str());
}

Result<std::unique_ptr<FileReplacement>> FileReplacement::prepare(const std::string& path,
                                                                  const ByteSource& content,
                                                                  const FileStatus& like) {
    return make(path, content, like, false);
}

Result<std::unique_ptr<FileReplacement>> FileReplacement::prepareNew(const std::string& path,
                                                                     const ByteSource& content,
                                                                     const FileStatus& like) {
    return make(path, content, like, true);
}

Result<std::unique_ptr<FileReplacement>> FileReplacement::make(const std::string& path,
                                                               const ByteSource& content,
                                                               const FileStatus& like, bool isNew) {
    if (!isUsablePath(path)) return Failure(statusFromErrno(ENOENT));
    std::unique_ptr<FileReplacement> made(new FileReplacement(path, like, isNew));
    OSA_CHECK(made->create());
    OSA_CHECK(made->fill(content));
    if (!isNew) OSA_CHECK(copyAttributes(path, made->descriptor_.get()));
    OSA_CHECK(made->resemble());
    return made;
}

Result<void> FileReplacement::create() {
    descriptor_ = UniqueFd(systemCall([this] {
        beside_.replace(beside_.size() - 6, 6, "XXXXXX");
        return mkostemp(beside_.data(), O_CLOEXEC);
    }));
    if (!descriptor_.valid()) return lastError(Intent::changeCatalog);
    stage_ = Stage::waiting;
    return {};
}

Result<void> FileReplacement::fill(const ByteSource& content) {
    std::vector<std::byte> chunk(std::min(content.size(), kChunk));
    for (std::uint64_t offset = 0; offset < content.size(); offset += chunk.size()) {
        chunk.resize(std::min(content.size() - offset, kChunk));
        OSA_CHECK(content.readExactly(offset, chunk));
        OSA_CHECK(writeAll(descriptor_.get(), chunk));
    }
    return {};
}

Result<void> FileReplacement::resemble() {
    OSA_TRY(FileStatus made, statusOfDescriptor(descriptor_.get()));
    if (made.uid != like_.uid || made.gid != like_.gid) {
        giveToOwner();
        OSA_TRY(made, statusOfDescriptor(descriptor_.get()));
    }
    // It stays with its maker, who could read the old one to copy it; but another group's members
    // would come under the group's rights, and the old group's under the others'.
    if (made.gid != like_.gid && tellsGroupFromOthers(like_.mode)) return Failure(afpAccessDenied);
    return setMode(made.mode & 0777);
}

/// Only some may give files away, but all may give theirs to a group of their own.
void FileReplacement::giveToOwner() {
    const int given = systemCall([&] { return fchown(descriptor_.get(), like_.uid, like_.gid); });
    if (given == 0) return;
    constexpr uid_t kSameOwner = ~uid_t{0};
    (void)systemCall([&] { return fchown(descriptor_.get(), kSameOwner, like_.gid); });
}

Result<void> FileReplacement::setMode(std::uint32_t made) {
    const std::uint32_t wanted = like_.mode & 0777;
    if (made == wanted) return {};
    if (systemCall([&] { return fchmod(descriptor_.get(), wanted); }) == 0) return {};
    // Some volumes give all files one mode, which does if it lets nobody in who should not be.
    const bool fits = (made & ~wanted & 0666) == 0;
    if (errno == EPERM && fits) return {};
    return lastError(Intent::changeCatalog);
}

Result<void> FileReplacement::openFolder() {
    const std::string path = folderOf(target_);
    folder_ = UniqueFd(
        systemCall([&] { return ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    // One that may be written but not read cannot be synchronised.
    if (!folder_.valid() && errno != EACCES) return lastError(Intent::changeCatalog);
    return {};
}

/// That it fails is kept quiet: the new content is in place for everybody who looks, and a failure
/// would say that it is not.
void FileReplacement::synchroniseFolder() {
    if (folder_.valid()) (void)fsync(folder_.get());
}

Result<void> FileReplacement::takePlace() {
    if (systemCall([&] { return fsync(descriptor_.get()); }) != 0) return lastError(Intent::write);
    OSA_CHECK(openFolder());
    OSA_CHECK(isNew_ ? takeFreePlace() : replace());
    descriptor_ = UniqueFd();
    synchroniseFolder();
    return {};
}

Result<void> FileReplacement::takeFreePlace() {
    OSA_CHECK(renameToFree(beside_, target_));
    stage_ = Stage::placedNew;
    return {};
}

/// The old file is kept, so that giving it back takes neither room nor memory.
Result<void> FileReplacement::replace() {
    const int failed = systemCall([this] {
        return renameat2(AT_FDCWD, beside_.c_str(), AT_FDCWD, target_.c_str(), RENAME_EXCHANGE);
    });
    if (failed == 0) {
        stage_ = Stage::oldIsBeside;
        return {};
    }
    if (errno == ENOENT) return takeFreePlace();
    // Not for every file system, nor under every filter of system calls.
    const bool canNot = errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP || errno == EPERM;
    return canNot ? replaceWithoutExchange() : lastError(Intent::changeCatalog);
}

Result<void> FileReplacement::replaceWithoutExchange() {
    std::string second = beside_ + "+";
    if (addName(target_, second).ok()) {
        const auto renamed = rename(beside_, target_);
        if (!renamed.ok()) {
            discard(second);
            return renamed;
        }
        beside_.swap(second);
        stage_ = Stage::oldIsBeside;
        return {};
    }
    OSA_TRY(old_, openFile(target_, Follow::no));
    OSA_CHECK(rename(beside_, target_));
    stage_ = Stage::oldIsOpen;
    return {};
}

void FileReplacement::writeAgain() {
    try {
        const auto again = prepare(target_, *old_, like_);
        if (again.ok()) (void)(*again)->takePlace();
    } catch (const std::bad_alloc&) {
        return;  // as when the system refuses
    }
}

void FileReplacement::giveBack() {
    switch (std::exchange(stage_, Stage::done)) {
        case Stage::waiting:
            ::unlink(beside_.c_str());
            return;
        case Stage::placedNew:
            ::unlink(target_.c_str());
            break;
        case Stage::oldIsBeside:
            (void)::rename(beside_.c_str(), target_.c_str());
            break;
        case Stage::oldIsOpen:
            writeAgain();
            break;
        case Stage::done:
            return;
    }
    synchroniseFolder();
}

}  // namespace osa::posix
