// FSCreateFileUnicode and FSCreateDirectoryUnicode.
#include "platform/files/FileCreation.h"

#include <CoreServices/MacErrors.h>

#include <new>

#include "platform/files/FileSpecs.h"
#include "platform/files/Names.h"
#include "platform/files/Volumes.h"
#include "platform/posix/CatalogChanges.h"

namespace osa {
namespace {

/// Removes a new object again unless it is kept.
class Unfinished {
  public:
    Unfinished(const std::string& path, std::string sideFile)
        : path_(path), sideFile_(std::move(sideFile)) {
        // An older one is not ours.
        hadSideFile_ = posix::status(sideFile_, posix::Follow::no).status() != fnfErr;
    }
    Unfinished(const Unfinished&) = delete;
    Unfinished& operator=(const Unfinished&) = delete;
    ~Unfinished() {
        if (isKept_) return;
        posix::discard(path_);
        if (!hadSideFile_) posix::discard(sideFile_);
    }
    void keep() { isKept_ = true; }

  private:
    const std::string& path_;  // weak
    std::string sideFile_;
    bool hadSideFile_ = true;
    bool isKept_ = false;
};

// What FSCreateDirectoryUnicode promises of a new folder's mode.
constexpr std::uint32_t kFolderMode = 0755;

Result<posix::FileStatus> makeFile(const std::string& path) {
    return posix::createFile(path);
}

Result<posix::FileStatus> makeFolder(const std::string& path) {
    OSA_CHECK(posix::createFolder(path, kFolderMode));
    auto made = posix::status(path, posix::Follow::no);
    if (!made.ok()) posix::discard(path);
    return made;
}

Result<FSRef> create(const NewFile& object, Result<posix::FileStatus> (*make)(const std::string&),
                     Result<void> (*finish)(const FSRef&)) {
    if (object.whichInfo != 0 && object.info == nullptr) return Failure(paramErr);
    OSA_TRY(const Located folder, locate(object.parent));
    if (!folder.status.isFolder()) return Failure(errFSNotAFolder);
    OSA_TRY(const std::string leaf, leafFromUnicode(object.name, object.nameLength));
    if (leaf == "." || leaf == "..") return Failure(bdNamErr);
    const std::string path = joinPath(folder.path(), leaf);
    const std::string sideFile = joinPath(folder.path(), "._", leaf);
    OSA_TRY(const posix::FileStatus status, make(path));
    Unfinished unfinished(path, sideFile);
    const FSRef made = makeReference(internRealFolder(folder.path()), leaf, status);
    const OSErr set = FSSetCatalogInfo(&made, object.whichInfo, object.info);
    if (set != noErr) return Failure(set);
    if (finish != nullptr) OSA_CHECK(finish(made));
    unfinished.keep();
    return made;
}

/// Whoever is told a folder's ID may name its children by it.
Result<UInt32> knownFolderID(const FSRef& ref) {
    OSA_TRY(const Located folder, locate(&ref));
    OSA_TRY(const Volume volume, volumeOf(folder.status.device, folder.path()));
    rememberFolder(volume.number, nodeID(folder), folder.path());
    return nodeID(folder);
}

OSErr deliver(const Result<FSRef>& made, FSRef* newRef, FSSpec* newSpec) {
    if (!made.ok()) return static_cast<OSErr>(made.status());
    if (newRef != nullptr) *newRef = *made;
    if (newSpec == nullptr) return noErr;
    return FSGetCatalogInfo(&*made, 0, nullptr, nullptr, newSpec, nullptr);
}

}  // namespace

Result<FSRef> createFile(const NewFile& file, Result<void> (*finish)(const FSRef&)) {
    return create(file, makeFile, finish);
}

}  // namespace osa

OSErr FSCreateFileUnicode(const FSRef* parentRef, UniCharCount nameLength, const UniChar* name,
                          FSCatalogInfoBitmap whichInfo, const FSCatalogInfo* catalogInfo,
                          FSRef* newRef, FSSpec* newSpec) {
    try {
        const auto made = osa::createFile({parentRef, name, nameLength, whichInfo, catalogInfo});
        return osa::deliver(made, newRef, newSpec);
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}

OSErr FSCreateDirectoryUnicode(const FSRef* parentRef, UniCharCount nameLength, const UniChar* name,
                               FSCatalogInfoBitmap whichInfo, const FSCatalogInfo* catalogInfo,
                               FSRef* newRef, FSSpec* newSpec, UInt32* newDirID) {
    try {
        const auto made = osa::create({parentRef, name, nameLength, whichInfo, catalogInfo},
                                      osa::makeFolder, nullptr);
        if (made.ok() && newDirID != nullptr) {
            const auto id = osa::knownFolderID(*made);
            *newDirID = id.ok() ? *id : 0;
        }
        return osa::deliver(made, newRef, newSpec);
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}
