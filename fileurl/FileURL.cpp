// File URL descriptors on Core Foundation's URLs.
#include "fileurl/FileURL.h"

#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFRef.h>
#include <CoreFoundation/CFString.h>
#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <iterator>
#include <new>
#include <vector>

namespace {

/// Disposes of a descriptor when it goes.
struct OwnedDesc {
    AEDesc desc{typeNull, nullptr};
    OwnedDesc() = default;
    OwnedDesc(const OwnedDesc&) = delete;
    OwnedDesc& operator=(const OwnedDesc&) = delete;
    ~OwnedDesc() { AEDisposeDesc(&desc); }
};

/// The whole data of a descriptor; empty when it cannot be had.
std::vector<UInt8> DescData(const AEDesc* desc) {
    std::vector<UInt8> data(static_cast<std::size_t>(AEGetDescDataSize(desc)));
    if (AEGetDescData(desc, data.data(), static_cast<Size>(data.size())) != noErr) data.clear();
    return data;
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

}  // namespace

OSStatus FURLCreateDescFromCFURL(CFURLRef url, AEDesc* desc) {
    if (desc == nullptr) return paramErr;
    *desc = {typeNull, nullptr};
    if (url == nullptr) return paramErr;
    const auto bytes = CFRef<CFDataRef>::Adopt(
        CFURLCreateData(kCFAllocatorDefault, url, kCFStringEncodingUTF8, true));
    if (!bytes) return memFullErr;
    return AECreateDesc(typeFileURL, CFDataGetBytePtr(bytes.get()),
                        static_cast<Size>(CFDataGetLength(bytes.get())), desc);
}

OSStatus FURLCreateFromAEDesc(CFAllocatorRef allocator, const AEDesc* desc, CFURLRef* url) {
    if (url == nullptr) return paramErr;
    *url = nullptr;
    if (desc == nullptr) return paramErr;
    try {
        if (desc->descriptorType == typeFileURL) {
            const std::vector<UInt8> bytes = DescData(desc);
            *url = CFURLCreateWithBytes(allocator, bytes.data(), static_cast<CFIndex>(bytes.size()),
                                        kCFStringEncodingUTF8, nullptr);
        } else {
            OwnedDesc units;
            const OSStatus status = AECoerceDesc(desc, typeUnicodeText, &units.desc);
            if (status != noErr) return status;
            *url = CreateFromURLText(allocator, DescData(&units.desc));
        }
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
    return *url == nullptr ? cfStringConversionErr : noErr;
}

OSStatus FURLCreateFromParentAndName(CFAllocatorRef allocator, const FSRef* parent,
                                     const HFSUniStr255* name, CFURLRef* url) {
    if (url == nullptr) return paramErr;
    *url = nullptr;
    if (parent == nullptr || name == nullptr) return paramErr;
    if (name->length > std::size(name->unicode)) return cfStringConversionErr;
    const auto folder = CFRef<CFURLRef>::Adopt(CFURLCreateFromFSRef(allocator, parent));
    // A slash in a file's name is a colon in a path.
    HFSUniStr255 component = *name;
    std::replace(component.unicode, component.unicode + component.length, UniChar{'/'},
                 UniChar{':'});
    const auto leaf = CFRef<CFStringRef>::Adopt(
        CFStringCreateWithCharacters(allocator, component.unicode, component.length));
    if (folder && leaf) {
        *url = CFURLCreateCopyAppendingPathComponent(allocator, folder.get(), leaf.get(), false);
    }
    return *url == nullptr ? cfStringConversionErr : noErr;
}
