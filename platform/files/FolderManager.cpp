// FSFindFolder: the special folders as Linux desktops keep them.
#include <CoreServices/Folders.h>
#include <CoreServices/MacErrors.h>
#include <OSA/HostFolders.h>

#include <mutex>
#include <shared_mutex>

#include "platform/files/References.h"
#include "platform/files/Volumes.h"

namespace osa {
namespace {

struct HostRoot {
    std::shared_mutex lock;
    std::string path;  // empty: the user's real folders
};

HostRoot& hostRoot() {
    static HostRoot shared;
    return shared;
}

std::string hostRootPath() {
    HostRoot& host = hostRoot();
    const std::shared_lock guard(host.lock);
    return host.path;
}

/// The user's folders, under the host's root or as the environment says.
class UserFolders {
  public:
    UserFolders() : home_(hostRootPath()), isRedirected_(!home_.empty()) {
        if (home_.empty()) home_ = posix::environment("HOME");
        if (home_.empty()) home_ = posix::homeFolder();
    }

    bool isRedirected() const { return isRedirected_; }
    const std::string& home() const { return home_; }
    std::string data() const { return fromEnvironment("XDG_DATA_HOME", home_ + "/.local/share"); }

    std::string temporary() const {
        return isRedirected_ ? home_ + "/tmp" : fromEnvironment("TMPDIR", "/tmp");
    }

    /// A folder inside ~/Library where there is one, else where the environment puts its like.
    std::string library(const char* name, const char* variable, const char* below) const {
        const std::string library = home_ + "/Library";
        const auto status = posix::status(library, posix::Follow::yes);
        if (status.ok() && status->isFolder()) return library + "/" + name;
        return fromEnvironment(variable, home_ + "/" + below);
    }

  private:
    std::string fromEnvironment(const char* variable, std::string otherwise) const {
        const std::string value = isRedirected_ ? "" : posix::environment(variable);
        return value.starts_with('/') ? value : otherwise;
    }

    std::string home_;
    bool isRedirected_;
};

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

void OSASetHostFolderRoot(const char* path) {
    osa::HostRoot& host = osa::hostRoot();
    const std::unique_lock guard(host.lock);
    host.path = path == nullptr ? "" : path;
}
