// Launch Services: item flags and display names.
#include <CoreServices/LaunchServices.h>

#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFRef.h>
#include <CoreServices/Finder.h>
#include <CoreServices/MacErrors.h>

#include <new>

#include "platform/cf/StringObject.h"
#include "platform/files/References.h"
#include "platform/services/applications/ApplicationFolders.h"
#include "platform/services/applications/ApplicationKinds.h"

namespace osa {
namespace {

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

/// The desktop entry that the file is; none for any other file.
std::optional<Application> entryOf(const FSRef& ref) {
    const auto object = describeReference(&ref);
    if (!object.ok() || !object->name().ends_with(kEntryExtension)) return std::nullopt;
    auto application = applicationAt(object->path());
    return application.ok() ? std::optional(*std::move(application)) : std::nullopt;
}

void describeFile(const FSRef& ref, const FSCatalogInfo& catalog, LSItemInfoRecord& info) {
    FinderInfo finder;
    __builtin_memcpy(&finder, &catalog.finderInfo, sizeof finder);
    info.flags = kLSItemInfoIsPlainFile;
    info.filetype = finder.fdType;
    info.creator = finder.fdCreator;
    if (finder.fdType == kApplicationType) info.flags |= kLSItemInfoIsApplication;
    if ((finder.fdFlags & kIsAlias) != 0) info.flags |= kLSItemInfoIsAliasFile;
    if (const auto entry = entryOf(ref)) {
        info.flags |= kLSItemInfoIsApplication;
        info.filetype = entry->type;
        info.creator = entry->signature;
    }
}

OSStatus describeItem(CFURLRef url, LSItemInfoRecord& info) {
    FSRef ref;
    if (!CFURLGetFSRef(url, &ref)) return fnfErr;
    FSCatalogInfo catalog;
    const OSStatus status = FSGetCatalogInfo(&ref, kFSCatInfoNodeFlags | kFSCatInfoFinderInfo,
                                             &catalog, nullptr, nullptr, nullptr);
    if (status != noErr) return status;
    const CFRef<CFStringRef> name = nameOf(ref);
    if (!name) return fnfErr;
    if ((catalog.nodeFlags & kFSNodeIsDirectoryMask) != 0) {
        describeFolder(url, name.get(), info);
    } else {
        describeFile(ref, catalog, info);
    }
    info.extension = CFURLCopyPathExtension(url);
    return noErr;
}

OSStatus copyDisplayName(const FSRef& ref, CFStringRef& name) {
    HFSUniStr255 leaf;
    FSCatalogInfo catalog;
    const OSStatus status =
        FSGetCatalogInfo(&ref, kFSCatInfoNodeFlags, &catalog, &leaf, nullptr, nullptr);
    if (status != noErr) return status;
    const bool isFolder = (catalog.nodeFlags & kFSNodeIsDirectoryMask) != 0;
    if (const auto entry = isFolder ? std::nullopt : entryOf(ref)) {
        name = createString(entry->name);
        return name == nullptr ? memFullErr : noErr;
    }
    const auto full = CFRef<CFStringRef>::Adopt(
        CFStringCreateWithCharacters(kCFAllocatorDefault, leaf.unicode, leaf.length));
    if (!full) return memFullErr;
    const bool hides = isFolder && leaf.length > 4 && hasExtension(full.get(), CFSTR(".app"));
    const CFIndex shown = leaf.length - (hides ? 4 : 0);
    name = CFStringCreateWithSubstring(kCFAllocatorDefault, full.get(), CFRangeMake(0, shown));
    return name == nullptr ? memFullErr : noErr;
}

}  // namespace
}  // namespace osa

OSStatus LSCopyItemInfoForURL(CFURLRef url, LSRequestedInfo /*requested*/, LSItemInfoRecord* info) {
    if (url == nullptr || info == nullptr) return paramErr;
    *info = {};
    try {
        return osa::describeItem(url, *info);
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}

OSStatus LSCopyDisplayNameForRef(const FSRef* ref, CFStringRef* name) {
    if (ref == nullptr || name == nullptr) return paramErr;
    *name = nullptr;
    try {
        return osa::copyDisplayName(*ref, *name);
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}
