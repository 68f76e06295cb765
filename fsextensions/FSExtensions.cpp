// The extension routines that read and write the catalog, on the File Manager's published calls.
#include "fsextensions/FSExtensions.h"

#include <CoreFoundation/CFRef.h>
#include <CoreFoundation/CFString.h>
#include <CoreServices/MacErrors.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

static_assert(sizeof(FinderInfo) == 16 && sizeof(ExtendedFinderInfo) == 16);

namespace {
constexpr UInt32 kPathBufferSize = 4096;
constexpr CFIndex kLongestName = 255;
}  // namespace

OSStatus FSGetFinderInfo(const FSRef* ref, FinderInfo* info, ExtendedFinderInfo* extendedInfo,
                         Boolean* isDirectory) {
    FSCatalogInfoBitmap which = kFSCatInfoNone;
    if (info != nullptr) which |= kFSCatInfoFinderInfo;
    if (extendedInfo != nullptr) which |= kFSCatInfoFinderXInfo;
    if (isDirectory != nullptr) which |= kFSCatInfoNodeFlags;
    FSCatalogInfo catalog;
    const OSStatus status = FSGetCatalogInfo(ref, which, &catalog, nullptr, nullptr, nullptr);
    if (status != noErr) return status;
    if (info != nullptr) std::memcpy(info, &catalog.finderInfo, sizeof *info);
    if (extendedInfo != nullptr) {
        std::memcpy(extendedInfo, &catalog.extFinderInfo, sizeof *extendedInfo);
    }
    if (isDirectory != nullptr) *isDirectory = (catalog.nodeFlags & kFSNodeIsDirectoryMask) != 0;
    return noErr;
}

OSStatus FSSetFinderInfo(const FSRef* ref, const FinderInfo* info,
                         const ExtendedFinderInfo* extendedInfo) {
    FSCatalogInfoBitmap which = kFSCatInfoNone;
    FSCatalogInfo catalog{};
    if (info != nullptr) {
        which |= kFSCatInfoFinderInfo;
        std::memcpy(&catalog.finderInfo, info, sizeof *info);
    }
    if (extendedInfo != nullptr) {
        which |= kFSCatInfoFinderXInfo;
        std::memcpy(&catalog.extFinderInfo, extendedInfo, sizeof *extendedInfo);
    }
    return FSSetCatalogInfo(ref, which, &catalog);
}

OSStatus FSGetVRefNum(const FSRef* ref, FSVolumeRefNum* vRefNum) {
    if (vRefNum == nullptr) return paramErr;
    FSCatalogInfo catalog;
    const OSStatus status =
        FSGetCatalogInfo(ref, kFSCatInfoVolume, &catalog, nullptr, nullptr, nullptr);
    if (status == noErr) *vRefNum = catalog.volume;
    return status;
}

OSStatus FSGetParentRef(const FSRef* ref, FSRef* parent) {
    if (parent == nullptr) return paramErr;
    FSRef found{};
    const OSStatus status =
        FSGetCatalogInfo(ref, kFSCatInfoNone, nullptr, nullptr, nullptr, &found);
    if (status != noErr) return status;
    // The catalog answers the root's parent with a reference that names nothing.
    if (!FSRefValid(&found)) return fnfErr;
    *parent = found;
    return noErr;
}

OSStatus FSCheckLock(const FSRef* ref) {
    FSCatalogInfo catalog;
    OSStatus status =
        FSGetCatalogInfo(ref, kFSCatInfoNodeFlags, &catalog, nullptr, nullptr, nullptr);
    if (status != noErr) return status;
    if ((catalog.nodeFlags & kFSNodeLockedMask) != 0) return fLckdErr;
    char path[kPathBufferSize];
    status = FSRefMakePath(ref, reinterpret_cast<UInt8*>(path), sizeof path);
    if (status != noErr) return status;
    // Of a link the link, not what it leads to.
    if (faccessat(AT_FDCWD, path, W_OK, AT_SYMLINK_NOFOLLOW) == 0) return noErr;
    return errno == EROFS ? wPrErr : fLckdErr;
}

Boolean FSRefValid(const FSRef* ref) {
    return FSGetCatalogInfo(ref, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr) == noErr;
}

OSStatus FSChangeFinderFlags(const FSRef* ref, Boolean set, UInt16 flags) {
    FinderInfo info;
    OSStatus status = FSGetFinderInfo(ref, &info, nullptr, nullptr);
    if (status != noErr) return status;
    const auto old = info.fdFlags;
    info.fdFlags = static_cast<UInt16>(set ? old | flags : old & ~flags);
    return info.fdFlags == old ? noErr : FSSetFinderInfo(ref, &info, nullptr);
}

OSStatus HFSNameGetUnicodeName(ConstStr255Param hfsName, TextEncodingHint hint,
                               HFSUniStr255* unicodeName) {
    if (hfsName == nullptr || unicodeName == nullptr) return paramErr;
    if (hfsName[0] == 0) return bdNamErr;
    const CFStringEncoding encoding =
        hint == kTextEncodingUnknown ? CFStringGetSystemEncoding() : hint;
    const auto name = CFRef<CFStringRef>::Adopt(
        CFStringCreateWithPascalString(kCFAllocatorDefault, hfsName, encoding));
    if (!name) return paramErr;
    const CFIndex length = CFStringGetLength(name.get());
    if (length > kLongestName) return errFSNameTooLong;
    unicodeName->length = static_cast<UInt16>(length);
    CFStringGetCharacters(name.get(), CFRangeMake(0, length), unicodeName->unicode);
    return noErr;
}
