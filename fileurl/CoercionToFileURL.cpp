// The coercion handler from older descriptors of files to 'furl'.
#include <CoreServices/AEObjects.h>
#include <CoreServices/Aliases.h>
#include <CoreServices/MacMemory.h>

#include "fileurl/FileURL.h"
#include "fileurl/FileURLSupport.h"

namespace {

using namespace furl;

using URL = CFRef<CFURLRef>;

OSStatus URLOfReference(const FSRef& ref, URL& url) {
    url = URL::Adopt(CFURLCreateFromFSRef(kCFAllocatorDefault, &ref));
    return url ? noErr : fnfErr;
}

OSStatus FromSpec(const AEDesc* desc, URL& url) {
    FSSpec spec;
    if (!ReadDesc(desc, spec)) return errAECoercionFail;
    FSRef ref;
    if (FSpMakeFSRef(&spec, &ref) == noErr) return URLOfReference(ref, url);
    return FURLCreateFromFSSpec(kCFAllocatorDefault, &spec, url.out());
}

OSStatus FromReference(const AEDesc* desc, URL& url) {
    FSRef ref;
    return ReadDesc(desc, ref) ? URLOfReference(ref, url) : OSStatus{errAECoercionFail};
}

OSStatus FromAlias(const AEDesc* desc, URL& url) {
    const std::vector<UInt8> data = DescData(desc);
    Handle copy = nullptr;
    OSStatus status = PtrToHand(data.data(), &copy, static_cast<Size>(data.size()));
    if (status != noErr) return status;
    HLock(copy);
    FSRef ref;
    Boolean wasChanged = 0;
    status = FSResolveAlias(nullptr, reinterpret_cast<AliasHandle>(copy), &ref, &wasChanged);
    HUnlock(copy);
    DisposeHandle(copy);
    return status == noErr ? URLOfReference(ref, url) : status;
}

/// Set while an object specifier is coerced: the manager, asked for the same again, may come back
/// to this handler.
thread_local bool isInObject = false;

struct ObjectGuard {
    ObjectGuard() { isInObject = true; }
    ~ObjectGuard() { isInObject = false; }
};

OSStatus FromObject(const AEDesc* desc, URL& url, AEDesc* result) {
    if (isInObject) return errAECoercionFail;
    const ObjectGuard guard;
    OwnedDesc record;
    OSStatus status = AECoerceDesc(desc, typeAERecord, &record.desc);
    if (status != noErr) return status;
    DescType wanted = 0;
    DescType actual = 0;
    Size size = 0;
    status = AEGetParamPtr(&record.desc, keyAEDesiredClass, typeType, &actual, &wanted,
                           sizeof wanted, &size);
    if (status != noErr) return status;
    if (wanted == cFile || wanted == typeFileURL || wanted == typeAlias)
        return FURLCreateFromAppleEventParam(kCFAllocatorDefault, &record.desc, keyAEKeyData,
                                             url.out());
    status = AECoerceDesc(desc, typeFileURL, result);
    if (status != errAECoercionFail) return status;
    OwnedDesc spec;
    status = AECoerceDesc(desc, typeFSS, &spec.desc);
    return status == noErr ? OSStatus{AECoerceDesc(&spec.desc, typeFileURL, result)} : status;
}

OSStatus Coerce(const AEDesc* desc, AEDesc* result) {
    URL url;
    OSStatus status = errAECoercionFail;
    switch (desc->descriptorType) {
        case typeChar:
        case typeStyledText:
        case typeUnicodeText:
            status = FURLCreateFromAEDesc(kCFAllocatorDefault, desc, url.out());
            break;
        case typeFSS:
            status = FromSpec(desc, url);
            break;
        case typeFSRef:
            status = FromReference(desc, url);
            break;
        case typeAlias:
            status = FromAlias(desc, url);
            break;
        case typeObjectSpecifier:
            status = FromObject(desc, url, result);
            break;
        default:
            break;
    }
    return status == noErr && url ? FURLCreateDescFromCFURL(url.get(), result) : status;
}

}  // namespace

OSErr FURLCoerceDescToFURL(const AEDesc* desc, DescType, SInt32, AEDesc* result) {
    if (result == nullptr) return paramErr;
    *result = {typeNull, nullptr};
    if (desc == nullptr) return paramErr;
    return static_cast<OSErr>(Guarded([&] { return Coerce(desc, result); }));
}
