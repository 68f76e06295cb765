// What the sources of this folder share.
#pragma once

#include <CoreFoundation/CFRef.h>
#include <CoreFoundation/CFString.h>
#include <CoreServices/AEDataModel.h>
#include <CoreServices/MacErrors.h>

#include <cstring>
#include <new>
#include <string>
#include <vector>

namespace furl {

/// Disposes of a descriptor when it goes.
struct OwnedDesc {
    AEDesc desc{typeNull, nullptr};
    OwnedDesc() = default;
    OwnedDesc(const OwnedDesc&) = delete;
    OwnedDesc& operator=(const OwnedDesc&) = delete;
    ~OwnedDesc() { AEDisposeDesc(&desc); }
};

/// The whole data of a descriptor.
inline std::vector<UInt8> DescData(const AEDesc* desc) {
    std::vector<UInt8> data(static_cast<std::size_t>(AEGetDescDataSize(desc)));
    if (AEGetDescData(desc, data.data(), static_cast<Size>(data.size())) != noErr) data.clear();
    return data;
}

/// False when the data is not as long as the value.
template <typename Value>
bool ReadDesc(const AEDesc* desc, Value& value) {
    return AEGetDescDataSize(desc) == sizeof value &&
           AEGetDescData(desc, &value, sizeof value) == noErr;
}

inline std::u16string Units(CFStringRef text) {
    const CFIndex length = CFStringGetLength(text);
    std::u16string units(static_cast<std::size_t>(length), u'\0');
    CFStringGetCharacters(text, CFRangeMake(0, length), reinterpret_cast<UniChar*>(units.data()));
    return units;
}

inline CFRef<CFStringRef> StringOf(CFAllocatorRef allocator, const std::u16string& units) {
    return CFRef<CFStringRef>::Adopt(
        CFStringCreateWithCharacters(allocator, reinterpret_cast<const UniChar*>(units.data()),
                                     static_cast<CFIndex>(units.size())));
}

/// The component of a URL's path for a Mac name, and the reverse.
inline std::u16string SwapSeparators(std::u16string name) {
    for (char16_t& unit : name) unit = unit == u':' ? u'/' : unit == u'/' ? u':' : unit;
    return name;
}

/// The edge of every function: memory that runs out becomes a status.
template <typename Work>
OSStatus Guarded(Work work) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}

/// Takes back what FURLInstallCoercionHandlers installed; another copy's handlers stay.
void RemoveCoercionHandlers();

}  // namespace furl
