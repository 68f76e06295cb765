// Coercions of descriptors, as a table of (from, to, how).
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFRef.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>
#include <CoreServices/AEDataModel.h>
#include <CoreServices/Files.h>
#include <CoreServices/MacErrors.h>

namespace osa {
namespace {

OSErr fileReferenceToURL(const AEDesc* desc, AEDesc* result) {
    FSRef ref{};
    if (AEGetDescDataSize(desc) != sizeof ref) return errAECoercionFail;
    AEGetDescData(desc, &ref, sizeof ref);
    const auto url = CFRef<CFURLRef>::Adopt(CFURLCreateFromFSRef(kCFAllocatorDefault, &ref));
    if (!url) return fnfErr;
    const auto bytes = CFRef<CFDataRef>::Adopt(
        CFURLCreateData(kCFAllocatorDefault, url.get(), kCFStringEncodingUTF8, true));
    if (!bytes) return memFullErr;
    return AECreateDesc(typeFileURL, CFDataGetBytePtr(bytes.get()),
                        static_cast<Size>(CFDataGetLength(bytes.get())), result);
}

OSErr urlToFileReference(const AEDesc* desc, AEDesc* result) {
    if (desc->dataHandle == nullptr) return errAECoercionFail;
    const auto url = CFRef<CFURLRef>::Adopt(
        CFURLCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(*desc->dataHandle),
                             AEGetDescDataSize(desc), kCFStringEncodingUTF8, nullptr));
    FSRef ref{};
    if (!url || !CFURLGetFSRef(url.get(), &ref)) return fnfErr;
    return AECreateDesc(typeFSRef, &ref, sizeof ref, result);
}

struct Coercion {
    DescType from;
    DescType to;
    OSErr (*coerce)(const AEDesc* desc, AEDesc* result);
};

constexpr Coercion kCoercions[] = {
    {typeFSRef, typeFileURL, fileReferenceToURL},
    {typeFileURL, typeFSRef, urlToFileReference},
};

}  // namespace
}  // namespace osa

OSErr AECoerceDesc(const AEDesc* desc, DescType toType, AEDesc* result) {
    if (desc == nullptr || result == nullptr) return paramErr;
    if (toType == desc->descriptorType || toType == typeWildCard)
        return AEDuplicateDesc(desc, result);
    *result = {typeNull, nullptr};
    for (const osa::Coercion& coercion : osa::kCoercions) {
        if (coercion.from == desc->descriptorType && coercion.to == toType) {
            return coercion.coerce(desc, result);
        }
    }
    return errAECoercionFail;
}
