// Processes by serial number, by signature and by bundle identifier.
#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFRef.h>
#include <CoreServices/Processes.h>

#include "platform/base/FourCC.h"
#include "platform/events/coercions/BuiltInCoercions.h"
#include "platform/events/coercions/CoercionData.h"

namespace osa {
namespace {

constexpr OSType kNoSignature = FourCC("????");

OSErr signatureOf(const ProcessSerialNumber& number, OSType& signature) {
    ProcessInfoRec info{};
    info.processInfoLength = sizeof info;
    if (const OSErr status = GetProcessInformation(&number, &info); status != noErr) return status;
    signature = info.processSignature;
    return signature == 0 || signature == kNoSignature ? errAECoercionFail : noErr;
}

OSErr bundleIDOf(const ProcessSerialNumber& number, CFRef<CFStringRef>& identifier) {
    const auto about = CFRef<CFDictionaryRef>::Adopt(
        ProcessInformationCopyDictionary(&number, kProcessDictionaryIncludeAllInformationMask));
    if (!about) return procNotFound;
    const CFTypeRef value = CFDictionaryGetValue(about.get(), kCFBundleIdentifierKey);
    if (value == nullptr || CFGetTypeID(value) != CFStringGetTypeID()) return errAECoercionFail;
    identifier = CFRef<CFStringRef>::Retain(static_cast<CFStringRef>(value));
    return noErr;
}

/// The first process that meets `isWanted`; procNotFound when none does.
template <typename Test>
OSErr findProcess(AEDesc* result, Test isWanted) {
    ProcessSerialNumber number = {0, kNoProcess};
    OSErr status = noErr;
    while ((status = GetNextProcess(&number)) == noErr) {
        if (isWanted(number)) return makeDescOf(typeProcessSerialNumber, number, result);
    }
    return status;
}

}  // namespace

OSErr processToSignature(const AEDesc* from, DescType toType, AEDesc* result) {
    ProcessSerialNumber number;
    OSType signature = 0;
    if (!readValue(from, number)) return errAECoercionFail;
    const OSErr status = signatureOf(number, signature);
    return status != noErr ? status : makeDescOf(toType, signature, result);
}

OSErr processToBundleID(const AEDesc* from, DescType toType, AEDesc* result) {
    ProcessSerialNumber number;
    CFRef<CFStringRef> identifier;
    if (!readValue(from, number)) return errAECoercionFail;
    if (const OSErr status = bundleIDOf(number, identifier); status != noErr) return status;
    const auto bytes = CFRef<CFDataRef>::Adopt(CFStringCreateExternalRepresentation(
        kCFAllocatorDefault, identifier.get(), kCFStringEncodingUTF8, 0));
    if (!bytes) return errAECoercionFail;
    return AECreateDesc(toType, CFDataGetBytePtr(bytes.get()),
                        static_cast<Size>(CFDataGetLength(bytes.get())), result);
}

OSErr signatureToProcess(const AEDesc* from, DescType, AEDesc* result) {
    OSType wanted = 0;
    if (!readValue(from, wanted)) return errAECoercionFail;
    return findProcess(result, [&](const ProcessSerialNumber& number) {
        OSType signature = 0;
        return signatureOf(number, signature) == noErr && signature == wanted;
    });
}

OSErr bundleIDToProcess(const AEDesc* from, DescType, AEDesc* result) {
    const ByteSpan bytes = dataOf(*from);
    const auto wanted = CFRef<CFStringRef>::Adopt(
        CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
                                static_cast<CFIndex>(bytes.size()), kCFStringEncodingUTF8, 0));
    if (!wanted) return errAECoercionFail;
    return findProcess(result, [&](const ProcessSerialNumber& number) {
        CFRef<CFStringRef> identifier;
        return bundleIDOf(number, identifier) == noErr &&
               CFStringCompare(identifier.get(), wanted.get(), kCFCompareCaseInsensitive) ==
                   kCFCompareEqualTo;
    });
}

}  // namespace osa
