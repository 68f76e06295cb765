// Files, applications and processes that a descriptor names.
#include <CoreServices/AEObjects.h>
#include <CoreServices/LaunchServices.h>
#include <CoreServices/MacErrors.h>
#include <CoreServices/Processes.h>

#include <algorithm>

#include "Libraries/MacToolboxLib/CAEDesc/CAEDesc.h"
#include "Libraries/MacToolboxLib/TBUtilities/Applications/Applications.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "fileurl/FileURL.h"

void CAEDescReader::GetFileSpec(FSRef* ref) const {
    switch (GetType()) {
        case typeFSRef:
            if (AEGetDescDataSize(&mDesc) != sizeof *ref) FailOSErr(errAECorruptData);
            GetData(reinterpret_cast<char*>(ref), sizeof *ref);
            break;
        case typeApplSignature:
            FailOSErr(LSFindApplicationForInfo(GetSignature(), nullptr, nullptr, ref, nullptr));
            break;
        case typeApplicationBundleID: {
            SCoreFoundation<CFStringRef> bundleID;
            GetString(bundleID);
            FailOSErr(LSFindApplicationForInfo(0, bundleID, nullptr, ref, nullptr));
            break;
        }
        case typeProcessSerialNumber: {
            const ProcessSerialNumber psn = GetPSN();
            FailOSErr(GetProcessBundleLocation(&psn, ref));
            break;
        }
        case typeApplicationURL:
            GetAppFileSpec(ref);
            break;
        case typeChar:
        case typeStyledText:
        case typeIntlText:
        case typeUTF8Text:
        case typeUnicodeText:
            GetPathSpec(ref);
            break;
        default:
            GetCoercedFileSpec(ref);
            break;
    }
}

void CAEDescReader::GetCoercedFileSpec(FSRef* ref) const {
    CAEDesc coerced;
    CoerceExactly(typeFSRef, coerced);
    coerced.GetFileSpec(ref);
}

/// Text as a path.
void CAEDescReader::GetPathSpec(FSRef* ref) const {
    SCoreFoundation<CFStringRef> path;
    GetString(path);
    const bool isPOSIX = CFStringHasPrefix(path, CFSTR("/"));
    if (!isPOSIX && CFStringFind(path, CFSTR(":"), 0).location == kCFNotFound) {
        try {
            GetCoercedFileSpec(ref);
        } catch (OSStatus status) {
            FailOSErr(status == errAECoercionFail ? status : fnfErr);
        }
        return;
    }
    const SCoreFoundation<CFURLRef> url(CFURLCreateWithFileSystemPath(
        kCFAllocatorDefault, path, isPOSIX ? kCFURLPOSIXPathStyle : kCFURLHFSPathStyle, false));
    if (url.Get() == nullptr || !CFURLGetFSRef(url, ref)) FailOSErr(cfStringConversionErr);
}

void CAEDescReader::GetFileSpec(FSRef* ref, HFSUniStr255* name) const {
    if (Is(typeFSRef)) {
        GetFileSpec(ref);
        FailOSErr(FSGetCatalogInfo(ref, kFSCatInfoNone, nullptr, name, nullptr, nullptr));
        return;
    }
    const SCoreFoundation<CFURLRef> url(GetCFURL());
    const SCoreFoundation<CFURLRef> parent(
        CFURLCreateCopyDeletingLastPathComponent(kCFAllocatorDefault, url));
    FailNIL(parent);
    if (!CFURLGetFSRef(parent, ref)) FailOSErr(fnfErr);
    const SCoreFoundation<CFStringRef> leaf(CFURLCopyLastPathComponent(url));
    FailNIL(leaf);
    FromCFString(leaf, *name);
    // A colon in a path is a slash in a file's name.
    std::replace(name->unicode, name->unicode + name->length, UniChar{':'}, UniChar{'/'});
}

void CAEDescReader::GetAppFileSpec(FSRef* ref) const {
    try {
        GetCoercedFileSpec(ref);
        return;
    } catch (OSStatus status) {
        if (status != errAECoercionFail) throw;
    }
    std::string text;
    GetTextBytes(text);
    const SCoreFoundation<CFURLRef> url(CFURLCreateWithBytes(
        kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.data()),
        static_cast<CFIndex>(text.size()), CFStringGetSystemEncoding(), nullptr));
    if (url.Get() == nullptr || !CFURLGetFSRef(url, ref)) FailOSErr(fnfErr);
}

CFURLRef CAEDescReader::GetCFURL() const {
    CFURLRef url = nullptr;
    if (Is(typeFileURL) || Is(typeChar) || Is(typeStyledText) || Is(typeUnicodeText)) {
        FailOSErr(FURLCreateFromAEDesc(kCFAllocatorDefault, &mDesc, &url));
        return url;
    }
    CAEDesc coerced;
    FailOSErr(FURLCoerceDescToFURL(&mDesc, typeFileURL, 0, &coerced.mDesc));
    FailOSErr(FURLCreateFromAEDesc(kCFAllocatorDefault, &coerced.mDesc, &url));
    return url;
}

OSType CAEDescReader::GetSignature() const {
    CAEDesc coerced;
    if (!Is(typeApplSignature)) {
        try {
            CoerceExactly(typeApplSignature, coerced);
        } catch (OSStatus status) {
            if (status != errAECoercionFail || Is(typeFSRef)) throw;
            CoerceExactly(typeFSRef, coerced);
        }
        return coerced.GetSignature();
    }
    OSType signature = 0;
    if (AEGetDescDataSize(&mDesc) < static_cast<Size>(sizeof signature)) {
        FailOSErr(errAECorruptData);
    }
    GetData(reinterpret_cast<char*>(&signature), sizeof signature);
    return signature;
}

ProcessSerialNumber CAEDescReader::GetPSN() const {
    ProcessSerialNumber psn{};
    if (Is(typeApplSignature)) {
        if (!GetApplicationPSN(GetSignature(), psn)) FailOSErr(procNotFound);
    } else if (Is(typeProcessSerialNumber)) {
        if (AEGetDescDataSize(&mDesc) < static_cast<Size>(sizeof psn)) FailOSErr(errAECorruptData);
        GetData(reinterpret_cast<char*>(&psn), sizeof psn);
    } else {
        CAEDesc coerced;
        CoerceExactly(typeProcessSerialNumber, coerced);
        return coerced.GetPSN();
    }
    return psn;
}

bool CAEDescReader::IsFile() const {
    switch (GetType()) {
        case typeFSS:
        case typeFSRef:
        case cFile:
        case typeAlias:
        case typeFileURL:
        case 'psxf':
            return true;
        case typeObjectSpecifier:
            return IsFileSpecifier();
        default:
            return false;
    }
}

/// Whether an object specifier names a file by its name alone.
bool CAEDescReader::IsFileSpecifier() const {
    CAEDesc record;
    CoerceTo(typeAERecord, record);
    CAEDesc form;
    CAEDesc key;
    CAEDesc wanted;
    CAEDesc container;
    record.GetProperty(keyAEKeyForm, form, typeWildCard);
    record.GetProperty(keyAEKeyData, key, typeWildCard);
    record.GetProperty(keyAEDesiredClass, wanted, typeWildCard);
    record.GetProperty(keyAEContainer, container, typeWildCard);
    const OSType wantedClass = wanted.GetTypeType();
    const bool isFileClass =
        wantedClass == cFile || wantedClass == typeFSS || wantedClass == typeAlias;
    const bool isContained = !container.Empty() && AEGetDescDataSize(&container.mDesc) > 0;
    if (!isFileClass || isContained || form.GetEnumeration() != formName) return false;
    return key.Is(typeChar) || key.Is(typeFileURL) || key.Is(typeIntlText) ||
           key.Is(typeUTF8Text) || key.Is(typeStyledText) || key.Is(typeUnicodeText);
}
