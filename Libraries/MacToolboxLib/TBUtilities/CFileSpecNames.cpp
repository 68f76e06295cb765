// CFileSpec: names, URLs and bundles.
#include <CoreServices/LaunchServices.h>
#include <CoreServices/MacErrors.h>

#include "Libraries/MacToolboxLib/TBUtilities/CFileSpec.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "fsextensions/FSExtensions.h"

namespace {

/// What Launch Services says of the object; no flags when it says nothing.
LSItemInfoFlags ItemFlags(const CFileSpec& spec) {
    const SCoreFoundation<CFURLRef> url = spec.GetURL();
    FailNIL(url);
    LSItemInfoRecord info{};
    static_cast<void>(LSCopyItemInfoForURL(url, kLSRequestAllInfo, &info));
    const SCoreFoundation<CFStringRef> extension(info.extension);
    return info.flags;
}

/// fnfErr when the object is no bundle.
OSStatus PackageInfo(const FSRef& ref, OSType& type, OSType& creator) {
    const SCoreFoundation<CFURLRef> url(CFURLCreateFromFSRef(kCFAllocatorDefault, &ref));
    if (url == nullptr) return fnfErr;
    const SCoreFoundation<CFBundleRef> bundle(CFBundleCreate(kCFAllocatorDefault, url));
    if (bundle == nullptr) return fnfErr;
    CFBundleGetPackageInfo(bundle, &type, &creator);
    return noErr;
}

}  // namespace

void CFileSpec::GetName(HFSUniStr255& name) const {
    FailOSErr(FSGetCatalogInfo(&mRef, kFSCatInfoNone, nullptr, &name, nullptr, nullptr));
}

void CFileSpec::GetName(TCLString& name) const {
    HFSUniStr255 record;
    GetName(record);
    name = ToTCLString(record);
}

void CFileSpec::GetName(SCoreFoundation<CFStringRef>& name) const {
    HFSUniStr255 record;
    GetName(record);
    name = ToCFString(record);
}

void CFileSpec::GetName(SCoreFoundation<CFMutableStringRef>& name) const {
    HFSUniStr255 record;
    GetName(record);
    name = ToCFMutableString(record);
}

TCLString CFileSpec::GetDisplayName() const {
    CFStringRef name = nullptr;
    FailOSErr(LSCopyDisplayNameForRef(&mRef, &name));
    const SCoreFoundation<CFStringRef> holder(name);
    return ToTCLString(name);
}

SCoreFoundation<CFURLRef> CFileSpec::GetURL() const {
    return SCoreFoundation<CFURLRef>(CFURLCreateFromFSRef(kCFAllocatorDefault, &mRef));
}

SCoreFoundation<CFBundleRef> CFileSpec::GetBundle() const {
    const SCoreFoundation<CFURLRef> url = GetURL();
    FailNIL(url);
    return SCoreFoundation<CFBundleRef>(CFBundleCreate(kCFAllocatorDefault, url));
}

TCLString CFileSpec::GetBundleID() const {
    try {
        const SCoreFoundation<CFBundleRef> bundle = GetBundle();
        if (bundle == nullptr) return gEmptyString;
        const CFTypeRef value =
            CFBundleGetValueForInfoDictionaryKey(bundle, kCFBundleIdentifierKey);
        if (value == nullptr || CFGetTypeID(value) != CFStringGetTypeID()) return gEmptyString;
        return ToTCLString(static_cast<CFStringRef>(value));
    } catch (...) {
        return gEmptyString;
    }
}

bool CFileSpec::IsApplication() const {
    return (ItemFlags(*this) & kLSItemInfoIsApplication) != 0;
}

bool CFileSpec::IsBundle() const {
    return (ItemFlags(*this) & kLSItemInfoIsPackage) != 0;
}

void GetFileTypeAndCreator(const FSRef* ref, OSType* type, OSType* creator) {
    FinderInfo info{};
    Boolean isFolder = false;
    OSStatus status = FSGetFinderInfo(ref, &info, nullptr, &isFolder);
    if (status == noErr && !isFolder) {
        if (type != nullptr) *type = info.fdType;
        if (creator != nullptr) *creator = info.fdCreator;
        return;
    }
    if (status != noErr && status != fnfErr) FailOSErr(status);
    OSType packageType = 0;
    OSType packageCreator = 0;
    const OSStatus packageStatus = PackageInfo(*ref, packageType, packageCreator);
    if (packageStatus == noErr) {
        if (type != nullptr) *type = packageType;
        if (creator != nullptr) *creator = packageCreator;
    } else {
        status = packageStatus;
    }
    // Where the first question said that the object is gone, that stands, outputs filled or not.
    FailOSErr(status);
}
