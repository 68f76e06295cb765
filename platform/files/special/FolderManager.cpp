// FSFindFolder: the special folders as Linux desktops keep them.
#include <CoreServices/Folders.h>
#include <CoreServices/MacErrors.h>

#include <new>

#include "platform/files/References.h"
#include "platform/files/Volumes.h"
#include "platform/files/special/UserFolders.h"

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

/// Whether all users share what is in the domain.
bool isMachineDomain(FSVolumeRefNum number) {
    return number >= kSystemDomain && number <= kNetworkDomain;
}

/// A folder inside /Library where there is one, else where Linux keeps its like.
std::string machineLibrary(const char* name, const char* otherwise) {
    const auto status = posix::status("/Library", posix::Follow::yes);
    return status.ok() && status->isFolder() ? std::string("/Library/") + name : otherwise;
}

/// The folders that are the machine's in its domains; empty for the other types.
std::string machinePath(OSType type) {
    switch (type) {
        case kPreferencesFolderType:
            return machineLibrary("Preferences", "/etc/xdg");
        case kApplicationSupportFolderType:
            return machineLibrary("Application Support", "/usr/local/share");
        case kCachedDataFolderType:
            return machineLibrary("Caches", "/var/cache");
        default:
            return {};
    }
}

Result<std::string> userPath(const UserFolders& user, FSVolumeRefNum number, OSType type) {
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
        case kDesktopFolderType:
            return user.named("XDG_DESKTOP_DIR", "Desktop");
        case kDocumentsFolderType:
            return user.named("XDG_DOCUMENTS_DIR", "Documents");
        case kApplicationsFolderType:
            return user.home() + "/Applications";
        default:
            return Failure(fnfErr);
    }
}

struct SpecialFolder {
    std::string path;
    std::uint32_t mode = 0700;  // of the folders that have to be made
};

Result<SpecialFolder> specialFolder(FSVolumeRefNum number, OSType type) {
    constexpr std::uint32_t kMachineMode = 0755;
    const UserFolders user;
    if (!isDomain(number) && !findVolume(number)) return Failure(nsvErr);
    if (!user.isRedirected()) {
        if (type == kApplicationsFolderType && number != kUserDomain)
            return SpecialFolder{"/Applications", kMachineMode};
        std::string path = isMachineDomain(number) ? machinePath(type) : "";
        if (!path.empty()) return SpecialFolder{std::move(path), kMachineMode};
    }
    OSA_TRY(std::string path, userPath(user, number, type));
    return SpecialFolder{std::move(path)};
}

/// Makes the folder and every missing one above it.
Result<void> createFolders(const std::string& path, std::uint32_t mode) {
    const auto made = posix::createFolder(path, mode);
    if (made.ok() || made.status() == dupFNErr) return {};
    const std::size_t slash = path.rfind('/');
    if (made.status() != fnfErr || slash == 0 || slash == std::string::npos) {
        return Failure(made.status());
    }
    OSA_CHECK(createFolders(path.substr(0, slash), mode));
    const auto madeNow = posix::createFolder(path, mode);
    // Somebody else may have been quicker.
    if (!madeNow.ok() && madeNow.status() != dupFNErr) return Failure(madeNow.status());
    return {};
}

Result<FSRef> findFolder(FSVolumeRefNum number, OSType type, bool create) {
    OSA_TRY(const SpecialFolder folder, specialFolder(number, type));
    bool isFolder = false;
    auto found = referenceToPath(folder.path, &isFolder);
    if (!found.ok() && found.status() == fnfErr && create) {
        OSA_CHECK(createFolders(folder.path, folder.mode));
        found = referenceToPath(folder.path, &isFolder);
    }
    if (found.ok() && !isFolder) return Failure(fnfErr);
    return found;
}

}  // namespace
}  // namespace osa

OSErr FSFindFolder(FSVolumeRefNum vRefNum, OSType folderType, Boolean createFolder,
                   FSRef* foundRef) try {
    if (foundRef == nullptr) return paramErr;
    const auto found = osa::findFolder(vRefNum, folderType, createFolder != 0);
    if (found.ok()) *foundRef = *found;
    return static_cast<OSErr>(found.status());
} catch (const std::bad_alloc&) {
    return memFullErr;
}
