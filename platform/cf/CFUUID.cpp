// CFUUID.
#include <CoreFoundation/CFUUID.h>

#include <array>
#include <cstring>
#include <map>
#include <mutex>
#include <random>

#include "platform/cf/CFRuntime.h"
#include "platform/cf/StringObject.h"

struct __CFUUID : osa::CFObject {
    static const osa::ClassRecord kClass;
    explicit __CFUUID(CFUUIDBytes value) : CFObject(kClass), bytes(value) {}
    CFUUIDBytes bytes;
};

namespace {

using Octets = std::array<UInt8, 16>;

Octets octetsOf(const osa::CFObject* object) {
    Octets octets;
    std::memcpy(octets.data(), &static_cast<const __CFUUID*>(object)->bytes, octets.size());
    return octets;
}

CFUUIDBytes bytesOf(const Octets& octets) {
    CFUUIDBytes bytes;
    std::memcpy(&bytes, octets.data(), octets.size());
    return bytes;
}

bool equalUUIDs(const osa::CFObject* first, const osa::CFObject* second) {
    return octetsOf(first) == octetsOf(second);
}

CFHashCode hashUUID(const osa::CFObject* object) {
    CFHashCode hash = 0;
    std::memcpy(&hash, &static_cast<const __CFUUID*>(object)->bytes, sizeof hash);
    return hash;
}

constexpr bool isHyphen(std::size_t position) {
    return position == 8 || position == 13 || position == 18 || position == 23;
}

std::string textOf(const osa::CFObject* object) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (const UInt8 octet : octetsOf(object)) {
        if (isHyphen(text.size())) text += '-';
        text += kDigits[octet >> 4];
        text += kDigits[octet & 15];
    }
    return text;
}

int digit(char16_t unit) {
    if (unit >= u'0' && unit <= u'9') return unit - u'0';
    if (unit >= u'A' && unit <= u'F') return unit - u'A' + 10;
    if (unit >= u'a' && unit <= u'f') return unit - u'a' + 10;
    return -1;
}

}  // namespace

constinit const osa::ClassRecord __CFUUID::kClass{"CFUUID", osa::deleteObject<__CFUUID>, equalUUIDs,
                                                  hashUUID, textOf};

CFTypeID CFUUIDGetTypeID() {
    return osa::typeIDOf(__CFUUID::kClass);
}

CFUUIDRef CFUUIDCreate(CFAllocatorRef allocator) {
    std::random_device source;
    Octets octets;
    for (UInt8& octet : octets) octet = static_cast<UInt8>(source());
    octets[6] = static_cast<UInt8>((octets[6] & 0x0F) | 0x40);  // version: random
    octets[8] = static_cast<UInt8>((octets[8] & 0x3F) | 0x80);
    return CFUUIDCreateFromUUIDBytes(allocator, bytesOf(octets));
}

CFUUIDRef CFUUIDCreateFromUUIDBytes(CFAllocatorRef, CFUUIDBytes bytes) {
    return osa::makeObject<__CFUUID>(bytes);
}

CFUUIDRef CFUUIDCreateFromString(CFAllocatorRef allocator, CFStringRef string) {
    if (string == nullptr || string->length != 36) return nullptr;
    Octets octets{};
    std::size_t digits = 0;
    for (std::size_t i = 0; i < string->size(); ++i) {
        if (isHyphen(i)) {
            if (string->at(i) != u'-') return nullptr;
            continue;
        }
        const int value = digit(string->at(i));
        if (value < 0) return nullptr;
        octets[digits / 2] = static_cast<UInt8>(octets[digits / 2] << 4 | value);
        ++digits;
    }
    return CFUUIDCreateFromUUIDBytes(allocator, bytesOf(octets));
}

CFStringRef CFUUIDCreateString(CFAllocatorRef, CFUUIDRef uuid) {
    return uuid == nullptr ? nullptr : osa::createString(textOf(uuid));
}

CFUUIDRef CFUUIDGetConstantUUIDWithBytes(CFAllocatorRef, UInt8 byte0, UInt8 byte1, UInt8 byte2,
                                         UInt8 byte3, UInt8 byte4, UInt8 byte5, UInt8 byte6,
                                         UInt8 byte7, UInt8 byte8, UInt8 byte9, UInt8 byte10,
                                         UInt8 byte11, UInt8 byte12, UInt8 byte13, UInt8 byte14,
                                         UInt8 byte15) {
    static std::mutex mutex;
    static auto& constants = *new std::map<Octets, CFUUIDRef>;
    const Octets octets{byte0, byte1, byte2,  byte3,  byte4,  byte5,  byte6,  byte7,
                        byte8, byte9, byte10, byte11, byte12, byte13, byte14, byte15};
    const std::lock_guard lock(mutex);
    CFUUIDRef& uuid = constants[octets];
    if (uuid == nullptr) {
        auto* const made = osa::makeObject<__CFUUID>(bytesOf(octets));
        if (made == nullptr) return nullptr;
        made->count = osa::CFObject::kImmortal;
        osa::noteObjectGone();
        uuid = made;
    }
    return uuid;
}

CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef uuid) {
    return uuid == nullptr ? CFUUIDBytes{} : uuid->bytes;
}
