// Launch Services: item flags and display names.
#include <CoreServices/LaunchServices.h>

#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFRef.h>
#include <CoreServices/Finder.h>
#include <CoreServices/MacErrors.h>

#include "platform/base/FourCC.h"

namespace osa {
namespace {

constexpr OSType kApplicationType = FourCC("APPL");

bool hasExtension(CFStringRef name, CFStringRef extension) {
    return CFStringHasSuffix(name, extension) != 0;
}

CFRef<CFStringRef> nameOf(const FSRef& ref) {
    HFSUniStr255 name;
    if (FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, &name, nullptr, nullptr) != noErr)
        return {};
    return CFRef<CFStringRef>::Adopt(
        CFStringCreateWithCharacters(kCFAllocatorDefault, name.unicode, name.length));
}

/// Flags and codes of a folder: a bundle, a document package or a plain folder.
void describeFolder(CFURLRef url, CFStringRef name, LSItemInfoRecord& info) {
    info.flags = kLSItemInfoIsContainer;
    const auto bundle = CFRef<CFBundleRef>::Adopt(CFBundleCreate(kCFAllocatorDefault, url));
    if (bundle) {
        info.flags |= kLSItemInfoIsPackage;
        CFBundleGetPackageInfo(bundle.get(), &info.filetype, &info.creator);
        if (info.filetype == kApplicationType) info.flags |= kLSItemInfoIsApplication;
    } else if (hasExtension(name, CFSTR(".rtfd"))) {
        info.flags |= kLSItemInfoIsPackage;
    }
}

void describeFile(const FSCatalogInfo& catalog, LSItemInfoRecord& info) {
    FinderInfo finder;
    __builtin_memcpy(&finder, &catalog.finderInfo, sizeof finder);
    info.flags = kLSItemInfoIsPlainFile;
    info.filetype = finder.fdType;
    info.creator = finder.fdCreator;
    if (finder.fdType == kApplicationType) info.flags |= kLSItemInfoIsApplication;
    if ((finder.fdFlags & kIsAlias) != 0) info.flags |= kLSItemInfoIsAliasFile;
}

}  // namespace
}  // namespace osa

OSStatus LSCopyItemInfoForURL(CFURLRef url, LSRequestedInfo /*requested*/, LSItemInfoRecord* info) {
    if (url == nullptr || info == nullptr) return paramErr;
    *info = {};
    FSRef ref;
    if (!CFURLGetFSRef(url, &ref)) return fnfErr;
    FSCatalogInfo catalog;
    const OSStatus status = FSGetCatalogInfo(&ref, kFSCatInfoNodeFlags | kFSCatInfoFinderInfo,
                                             &catalog, nullptr, nullptr, nullptr);
    if (status != noErr) return status;
    const CFRef<CFStringRef> name = osa::nameOf(ref);
    if (!name) return fnfErr;
    if ((catalog.nodeFlags & kFSNodeIsDirectoryMask) != 0) {
        osa::describeFolder(url, name.get(), *info);
    } else {
        osa::describeFile(catalog, *info);
    }
    info->extension = CFURLCopyPathExtension(url);
    return noErr;
}

OSStatus LSCopyDisplayNameForRef(const FSRef* ref, CFStringRef* name) {
    if (ref == nullptr || name == nullptr) return paramErr;
    *name = nullptr;
    HFSUniStr255 leaf;
    FSCatalogInfo catalog;
    const OSStatus status =
        FSGetCatalogInfo(ref, kFSCatInfoNodeFlags, &catalog, &leaf, nullptr, nullptr);
    if (status != noErr) return status;
    const auto full = CFRef<CFStringRef>::Adopt(
        CFStringCreateWithCharacters(kCFAllocatorDefault, leaf.unicode, leaf.length));
    if (!full) return memFullErr;
    const bool isFolder = (catalog.nodeFlags & kFSNodeIsDirectoryMask) != 0;
    const bool hides = isFolder && leaf.length > 4 && osa::hasExtension(full.get(), CFSTR(".app"));
    const CFIndex shown = leaf.length - (hides ? 4 : 0);
    *name = CFStringCreateWithSubstring(kCFAllocatorDefault, full.get(), CFRangeMake(0, shown));
    return *name == nullptr ? memFullErr : noErr;
}
