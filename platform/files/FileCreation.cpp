// FSCreateFileUnicode.
#include "platform/files/FileCreation.h"

#include <CoreServices/MacErrors.h>

#include <new>

#include "platform/files/Names.h"

namespace osa {
namespace {

/// Removes a new file again unless it is kept.
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
        (void)posix::remove(path_);
        if (!hadSideFile_) (void)posix::remove(sideFile_);
    }
    void keep() { isKept_ = true; }

  private:
    const std::string& path_;  // weak
    std::string sideFile_;
    bool hadSideFile_ = true;
    bool isKept_ = false;
};

}  // namespace

Result<FSRef> createFile(const NewFile& file, Result<void> (*finish)(const FSRef&)) {
    if (file.whichInfo != 0 && file.info == nullptr) return Failure(paramErr);
    OSA_TRY(const Located folder, locate(file.parent));
    if (!folder.status.isFolder()) return Failure(errFSNotAFolder);
    OSA_TRY(const std::string leaf, leafFromUnicode(file.name, file.nameLength));
    if (leaf == "." || leaf == "..") return Failure(bdNamErr);
    const std::string path = joinPath(folder.path(), leaf);
    OSA_TRY(const posix::FileStatus status, posix::createFile(path));
    Unfinished unfinished(path, joinPath(folder.path(), "._", leaf));
    const FSRef made = makeReference(internRealFolder(folder.path()), leaf, status);
    if (const OSErr set = FSSetCatalogInfo(&made, file.whichInfo, file.info); set != noErr)
        return Failure(set);
    if (finish != nullptr) OSA_CHECK(finish(made));
    unfinished.keep();
    return made;
}

}  // namespace osa

OSErr FSCreateFileUnicode(const FSRef* parentRef, UniCharCount nameLength, const UniChar* name,
                          FSCatalogInfoBitmap whichInfo, const FSCatalogInfo* catalogInfo,
                          FSRef* newRef, FSSpec* newSpec) {
    try {
        const auto made = osa::createFile({parentRef, name, nameLength, whichInfo, catalogInfo});
        if (!made.ok()) return static_cast<OSErr>(made.status());
        if (newRef != nullptr) *newRef = *made;
        if (newSpec == nullptr) return noErr;
        return FSGetCatalogInfo(&*made, 0, nullptr, nullptr, newSpec, nullptr);
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}
