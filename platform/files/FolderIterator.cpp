// Walking over a folder's children.
#include <CoreServices/Files.h>
#include <CoreServices/MacErrors.h>

#include <memory>
#include <new>

#include "platform/files/Catalog.h"
#include "platform/files/stores/ForkStore.h"

struct OpaqueFSIterator {
    std::string folder;
    osa::FolderIndex index;
    osa::posix::DirectoryReader names;
    bool showsSideFiles;
};

namespace osa {
namespace {

/// Arrays with a place for each child; each may be null.
struct BulkTargets {
    FSCatalogInfo* infos;
    FSRef* refs;
    FSSpec* specs;
    HFSUniStr255* names;
};

template <typename T>
T* at(T* array, ItemCount place) {
    return array == nullptr ? nullptr : array + place;
}

Result<FSIterator> openIterator(const FSRef* container, FSIteratorFlags flags) {
    OSA_TRY(const Located object, locate(container));
    const bool isDeleting = flags == kFSIterateDelete;
    if (flags != kFSIterateFlat && !isDeleting) return Failure(errFSBadIteratorFlags);
    if (!object.status.isFolder()) return Failure(errFSNotAFolder);
    const std::string path = object.path();
    OSA_TRY(auto names, posix::DirectoryReader::open(path, posix::Follow::no));
    return new OpaqueFSIterator{path, internRealFolder(path), std::move(names), isDeleting};
}

/// True when the child got the place. One that vanished, or whose name has no Mac form although
/// names are asked for, gets none.
Result<bool> fillPlace(const OpaqueFSIterator& iterator, const std::string& name,
                       FSCatalogInfoBitmap which, const BulkTargets& targets, ItemCount place) {
    if (!iterator.showsSideFiles && isSideFile(iterator.folder, name)) return false;
    Located child(iterator.folder, name);
    const auto status = posix::status(child.path(), posix::Follow::no);
    if (!status.ok()) {
        if (status.status() == fnfErr) return false;
        return Failure(status.status());
    }
    child.status = *status;
    child.birth = status->birth();
    const CatalogTargets one{at(targets.infos, place), at(targets.names, place),
                             at(targets.specs, place), nullptr};
    const auto filled = fillCatalog(child, which, one);
    if (!filled.ok()) {
        if (filled.status() == fnfErr || filled.status() == bdNamErr) return false;
        return Failure(filled.status());
    }
    if (targets.refs != nullptr) {
        targets.refs[place] = makeReference(iterator.index, name, *status);
    }
    return true;
}

Result<ItemCount> fillPlaces(FSIterator iterator, ItemCount maximum, FSCatalogInfoBitmap which,
                             const BulkTargets& targets) {
    ItemCount count = 0;
    while (count < maximum) {
        OSA_TRY(const std::string name, iterator->names.next());
        if (name.empty()) break;
        OSA_TRY(const bool isFilled, fillPlace(*iterator, name, which, targets, count));
        if (isFilled) ++count;
    }
    return count;
}

}  // namespace
}  // namespace osa

OSErr FSOpenIterator(const FSRef* container, FSIteratorFlags flags, FSIterator* iterator) try {
    if (iterator == nullptr) return paramErr;
    *iterator = nullptr;
    const auto opened = osa::openIterator(container, flags);
    if (opened.ok()) *iterator = *opened;
    return static_cast<OSErr>(opened.status());
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSErr FSCloseIterator(FSIterator iterator) {
    if (iterator == nullptr) return errFSIteratorNotFound;
    delete iterator;
    return noErr;
}

OSErr FSGetCatalogInfoBulk(FSIterator iterator, ItemCount maximumObjects, ItemCount* actualObjects,
                           Boolean* containerChanged, FSCatalogInfoBitmap whichInfo,
                           FSCatalogInfo* catalogInfos, FSRef* refs, FSSpec* specs,
                           HFSUniStr255* names) try {
    if (actualObjects == nullptr || maximumObjects == 0) return paramErr;
    *actualObjects = 0;
    if (containerChanged != nullptr) *containerChanged = 0;
    if (iterator == nullptr) return errFSIteratorNotFound;
    if (whichInfo != 0 && catalogInfos == nullptr) return paramErr;
    const auto count =
        osa::fillPlaces(iterator, maximumObjects, whichInfo, {catalogInfos, refs, specs, names});
    if (!count.ok()) return static_cast<OSErr>(count.status());
    *actualObjects = *count;
    return *count == 0 ? errFSNoMoreItems : noErr;
} catch (const std::bad_alloc&) {
    return memFullErr;
}
