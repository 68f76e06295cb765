// File URL descriptors on Core Foundation's URLs.
#include "fileurl/FileURL.h"

#include <CoreFoundation/CFData.h>

#include "fileurl/FileURLSupport.h"

namespace {

using namespace furl;

/// The handlers are there for as long as this library is. It stands here because nobody uses file
/// URL descriptors without the functions beside it.
struct Handlers {
    Handlers() { FURLInstallCoercionHandlers(); }
    ~Handlers() { RemoveCoercionHandlers(); }
};
const Handlers handlers;

CFRef<CFDataRef> URLBytes(CFURLRef url) {
    return CFRef<CFDataRef>::Adopt(
        CFURLCreateData(kCFAllocatorDefault, url, kCFStringEncodingUTF8, true));
}

CFURLRef CreateFromURLText(CFAllocatorRef allocator, const std::vector<UInt8>& units) {
    const auto text = CFRef<CFStringRef>::Adopt(
        CFStringCreateWithCharacters(allocator, reinterpret_cast<const UniChar*>(units.data()),
                                     static_cast<CFIndex>(units.size() / sizeof(UniChar))));
    if (!text) return nullptr;
    if (const CFURLRef url = CFURLCreateWithString(allocator, text.get(), nullptr)) return url;
    const auto escaped = CFRef<CFStringRef>::Adopt(CFURLCreateStringByAddingPercentEscapes(
        allocator, text.get(), nullptr, nullptr, kCFStringEncodingUTF8));
    return escaped ? CFURLCreateWithString(allocator, escaped.get(), nullptr) : nullptr;
}

OSStatus CreateFromDesc(CFAllocatorRef allocator, const AEDesc* desc, CFURLRef* url) {
    switch (desc->descriptorType) {
        case typeFileURL: {
            const std::vector<UInt8> bytes = DescData(desc);
            *url = CFURLCreateWithBytes(allocator, bytes.data(), static_cast<CFIndex>(bytes.size()),
                                        kCFStringEncodingUTF8, nullptr);
            break;
        }
        case typeChar:
        case typeStyledText:
        case typeUTF8Text:
        case typeUnicodeText:
        case typeIntlText: {
            OwnedDesc units;
            const OSStatus status = AECoerceDesc(desc, typeUnicodeText, &units.desc);
            if (status != noErr) return status;
            *url = CreateFromURLText(allocator, DescData(&units.desc));
            break;
        }
        default:
            break;
    }
    return *url == nullptr ? cfStringConversionErr : noErr;
}

}  // namespace

OSStatus FURLCreateDescFromCFURL(CFURLRef url, AEDesc* desc) {
    if (desc == nullptr) return paramErr;
    *desc = {typeNull, nullptr};
    if (url == nullptr) return paramErr;
    const auto bytes = URLBytes(url);
    if (!bytes) return memFullErr;
    return AECreateDesc(typeFileURL, CFDataGetBytePtr(bytes.get()),
                        static_cast<Size>(CFDataGetLength(bytes.get())), desc);
}

OSStatus FURLPutParamCFURL(AEDesc* event, AEKeyword keyword, CFURLRef url) {
    if (event == nullptr || url == nullptr) return paramErr;
    const auto bytes = URLBytes(url);
    if (!bytes) return memFullErr;
    return AEPutParamPtr(event, keyword, typeFileURL, CFDataGetBytePtr(bytes.get()),
                         static_cast<Size>(CFDataGetLength(bytes.get())));
}

OSStatus FURLCreateFromAEDesc(CFAllocatorRef allocator, const AEDesc* desc, CFURLRef* url) {
    if (url == nullptr) return paramErr;
    *url = nullptr;
    if (desc == nullptr) return paramErr;
    return Guarded([&] { return CreateFromDesc(allocator, desc, url); });
}

OSStatus FURLCreateFromAppleEventParam(CFAllocatorRef allocator, const AEDesc* event,
                                       AEKeyword keyword, CFURLRef* url) {
    if (url == nullptr) return paramErr;
    *url = nullptr;
    if (event == nullptr) return paramErr;
    OwnedDesc param;
    const OSStatus status = AEGetParamDesc(event, keyword, typeFileURL, &param.desc);
    if (status != noErr) return status;
    return FURLCreateFromAEDesc(allocator, &param.desc, url);
}
