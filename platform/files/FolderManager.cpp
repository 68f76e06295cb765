// FSFindFolder: the special folders as Linux desktops keep them.
#include <CoreServices/Folders.h>
#include <CoreServices/MacErrors.h>

#include "platform/files/References.h"
#include "platform/files/UserFolders.h"
#include "platform/files/Volumes.h"

namespace osa {
namespace {

bool isDomain(FSVolumeRefNum number) {
    return number >= kOnSystemDisk && number <= kUserDomain;
}

Result<std::string> trashPath(const UserFolders& user, FSVolumeRefNum number) {
    const std::string atHome = user.data() + "/Trash/files";
    if (isDomain(number) || user.isRedirected()) return atHome;
    const auto volume = findVolume(number);
    if (!volume) return Failure(nsvErr);
    OSA_TRY(const posix::FileStatus home, posix::status(user.home(), posix::Follow::yes));
    if (home.device == volume->device) return atHome;
    return joinPath(volume->mountPoint, ".Trash-" + std::to_string(posix::userID()) + "/files");
}

Result<std::string> specialPath(FSVolumeRefNum number, OSType type) {
    const UserFolders user;
    if (!isDomain(number) && !findVolume(number)) return Failure(nsvErr);
    if (user.home().empty()) return Failure(fnfErr);
    switch (type) {
        case kTrashFolderType:
            return trashPath(user, number);
        case kCurrentUserFolderType:
            return user.home();
        case kTemporaryFolderType:
        case kUserSpecificTmpFolderType:
            return user.temporary();
        case kPreferencesFolderType:
            return user.library("Preferences", "XDG_CONFIG_HOME", ".config");
        case kApplicationSupportFolderType:
            return user.library("Application Support", "XDG_DATA_HOME", ".local/share");
        case kCachedDataFolderType:
            return user.library("Caches", "XDG_CACHE_HOME", ".cache");
        case kApplicationsFolderType:
            return number == kUserDomain || user.isRedirected() ? user.home() + "/Applications"
                                                                : "/Applications";
        default:
            return Failure(fnfErr);
    }
}

/// Makes the folder and every missing one above it.
Result<void> createFolders(const std::string& path) {
    const auto made = posix::createFolder(path, 0700);
    if (made.ok() || made.status() == dupFNErr) return {};
    const std::size_t slash = path.rfind('/');
    if (made.status() != fnfErr || slash == 0 || slash == std::string::npos) {
        return Failure(made.status());
    }
    OSA_CHECK(createFolders(path.substr(0, slash)));
    return posix::createFolder(path, 0700);
}

Result<FSRef> findFolder(FSVolumeRefNum number, OSType type, bool create) {
    OSA_TRY(const std::string path, specialPath(number, type));
    bool isFolder = false;
    auto found = referenceToPath(path, &isFolder);
    if (!found.ok() && found.status() == fnfErr && create) {
        OSA_CHECK(createFolders(path));
        found = referenceToPath(path, &isFolder);
    }
    if (found.ok() && !isFolder) return Failure(fnfErr);
    return found;
}

}  // namespace
}  // namespace osa

OSErr FSFindFolder(FSVolumeRefNum vRefNum, OSType folderType, Boolean createFolder,
                   FSRef* foundRef) {
    if (foundRef == nullptr) return paramErr;
    const auto found = osa::findFolder(vRefNum, folderType, createFolder != 0);
    if (found.ok()) *foundRef = *found;
    return static_cast<OSErr>(found.status());
}
