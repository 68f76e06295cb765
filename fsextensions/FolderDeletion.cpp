// The extension routines that delete folders with what is in them.
#include <CoreServices/MacErrors.h>

#include <array>
#include <memory>
#include <new>

#include "fsextensions/FSExtensions.h"

namespace {

using Children = std::array<FSRef, 64>;

// Rounds in a row in which others deleted all that was found.
constexpr int kMostFutileRounds = 10;

OSStatus ReadChildren(const FSRef* folder, FSIteratorFlags flags, Children& children,
                      ItemCount& count) {
    FSIterator iterator = nullptr;
    OSStatus status = FSOpenIterator(folder, flags, &iterator);
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

/// Until nothing is found any more. The iterator is closed before anything is deleted: a deep tree
/// must not use up the process's file descriptors, and what an iterator gives while its folder
/// changes is anybody's guess.
OSStatus DeleteFound(const FSRef* folder, FSIteratorFlags flags, Children& children) {
    for (int futileRounds = 0; futileRounds < kMostFutileRounds; ++futileRounds) {
        ItemCount count = 0;
        OSStatus status = ReadChildren(folder, flags, children, count);
        if (status != noErr || count == 0) return status;
        for (ItemCount i = 0; i < count; ++i) {
            status = DeleteWithContents(&children[i]);
            if (status == noErr) futileRounds = -1;
            // What somebody else deleted meanwhile is gone all the same.
            if (status != noErr && status != fnfErr) return status;
        }
    }
    return fnfErr;
}

}  // namespace

OSStatus FSDeleteContainerContents(const FSRef* container) try {
    FSRef parent;
    OSStatus status =
        FSGetCatalogInfo(container, kFSCatInfoNone, nullptr, nullptr, nullptr, &parent);
    if (status != noErr) return status;
    if (!FSRefValid(&parent)) return afpAccessDenied;
    const auto children = std::make_unique<Children>();
    // First what takes its side files along, so that nothing is ever left without them; then side
    // files that nothing took.
    status = DeleteFound(container, kFSIterateFlat, *children);
    return status == noErr ? DeleteFound(container, kFSIterateDelete, *children) : status;
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSStatus FSDeleteContainer(const FSRef* container) {
    const OSStatus status = FSDeleteContainerContents(container);
    return status == noErr ? FSDeleteObject(container) : status;
}
