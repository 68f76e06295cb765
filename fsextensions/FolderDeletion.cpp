// The extension routines that delete folders with what is in them.
#include <CoreServices/MacErrors.h>

#include <array>
#include <memory>
#include <new>

#include "fsextensions/FSExtensions.h"

namespace {

using Children = std::array<FSRef, 64>;

OSStatus ReadChildren(const FSRef* folder, Children& children, ItemCount& count) {
    FSIterator iterator = nullptr;
    OSStatus status = FSOpenIterator(folder, kFSIterateFlat, &iterator);
    if (status != noErr) return status;
    status = FSGetCatalogInfoBulk(iterator, children.size(), &count, nullptr, kFSCatInfoNone,
                                  nullptr, children.data(), nullptr, nullptr);
    FSCloseIterator(iterator);
    return status == errFSNoMoreItems ? noErr : status;
}

OSStatus DeleteWithContents(const FSRef* ref) {
    const OSStatus status = FSDeleteObject(ref);
    return status == fBsyErr ? FSDeleteContainer(ref) : status;
}

}  // namespace

OSStatus FSDeleteContainerContents(const FSRef* container) try {
    // The iterator is closed before anything is deleted: a deep tree must not use up the process's
    // file descriptors, and what an iterator gives while its folder changes is anybody's guess.
    const auto children = std::make_unique<Children>();
    for (;;) {
        ItemCount count = 0;
        OSStatus status = ReadChildren(container, *children, count);
        if (status != noErr || count == 0) return status;
        ItemCount deleted = 0;
        for (ItemCount i = 0; i < count; ++i) {
            status = DeleteWithContents(&(*children)[i]);
            if (status == noErr) ++deleted;
            // What somebody else deleted meanwhile is gone all the same.
            if (status != noErr && status != fnfErr) return status;
        }
        if (deleted == 0) return fnfErr;
    }
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSStatus FSDeleteContainer(const FSRef* container) {
    FSRef parent;
    OSStatus status =
        FSGetCatalogInfo(container, kFSCatInfoNone, nullptr, nullptr, nullptr, &parent);
    if (status != noErr) return status;
    if (!FSRefValid(&parent)) return afpAccessDenied;
    status = FSDeleteContainerContents(container);
    return status == noErr ? FSDeleteObject(container) : status;
}
