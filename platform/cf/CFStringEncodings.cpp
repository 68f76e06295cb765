// CFString: conversion from and to bytes, and the system encoding.
#include <CoreFoundation/CFString.h>

#include <atomic>
#include <cstring>

#include "platform/cf/StringObject.h"
#include "platform/text/TextConverter.h"

namespace {

using osa::ByteSpan;

constexpr CFStringEncoding kUnset = kCFStringEncodingInvalidId;
std::atomic<CFStringEncoding> chosenSystemEncoding{kUnset};

bool isUTF16(CFStringEncoding encoding) {
    return (encoding & 0xFFFFFF) == kCFStringEncodingUTF16 &&
           (encoding >> 24 == 0 || encoding >> 24 == 0x10 || encoding >> 24 == 0x14);
}

bool isUTF32(CFStringEncoding encoding) {
    return encoding == kCFStringEncodingUTF32 || encoding == kCFStringEncodingUTF32BE ||
           encoding == kCFStringEncodingUTF32LE;
}

/// Drops a mark of the encoding's own family and takes its byte order.
void honourMark(ByteSpan& bytes, CFStringEncoding& encoding) {
    const osa::ByteOrderMark mark = osa::detectMark(bytes, isUTF32(encoding));
    const bool sameFamily = mark.encoding == encoding ||
                            (isUTF16(mark.encoding) && isUTF16(encoding)) ||
                            (isUTF32(mark.encoding) && isUTF32(encoding));
    if (mark.length == 0 || !sameFamily) return;
    bytes = bytes.subspan(mark.length);
    encoding = mark.encoding;
}

CFStringRef decode(ByteSpan bytes, CFStringEncoding encoding, bool isExternal) {
    if (encoding == kCFStringEncodingMacRoman) return osa::createMacRomanString(bytes);
    if (isExternal) honourMark(bytes, encoding);
    const bool containsASCII = encoding == kCFStringEncodingASCII ||
                               encoding == kCFStringEncodingUTF8 ||
                               encoding == kCFStringEncodingISOLatin1;
    if (containsASCII && osa::isASCII(bytes)) return osa::createMacRomanString(bytes);
    std::u16string units;
    if (!osa::isEncodingKnown(encoding) || !osa::decodeText(bytes, encoding, units)) return nullptr;
    return osa::createString(units);
}

/// Cuts `bytes` to what whole characters of `units` fill at most `room` bytes; answers the units.
std::size_t fitInto(std::u16string_view units, CFStringEncoding encoding, UInt8 lossByte,
                    std::size_t room, std::string& bytes) {
    std::size_t low = 0;
    std::size_t high = units.size();
    while (low < high) {
        const std::size_t middle = low + (high - low + 1) / 2;
        std::string part;
        osa::encodeText(units.substr(0, middle), encoding, lossByte, part);
        if (part.size() <= room) {
            low = middle;
        } else {
            high = middle - 1;
        }
    }
    const bool splitsPair = low > 0 && low < units.size() && (units[low - 1] & 0xFC00) == 0xD800 &&
                            (units[low] & 0xFC00) == 0xDC00;
    if (splitsPair) --low;
    bytes.clear();
    return osa::encodeText(units.substr(0, low), encoding, lossByte, bytes);
}

std::string markFor(CFStringEncoding encoding) {
    std::string mark;
    if (encoding == kCFStringEncodingUTF16 || encoding == kCFStringEncodingUTF32)
        osa::encodeText(u"\uFEFF", encoding, 0, mark);
    return mark;
}

/// The whole string without a mark; false when a character cannot be converted.
bool encodeAll(CFStringRef string, CFStringEncoding encoding, std::string& bytes) {
    const std::u16string units = osa::unitsOf(string);
    return osa::isEncodingKnown(encoding) &&
           osa::encodeText(units, encoding, 0, bytes) == units.size();
}

}  // namespace

CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex length,
                                    CFStringEncoding encoding, Boolean isExternalRepresentation) {
    if (length < 0 || (bytes == nullptr && length > 0)) return nullptr;
    const ByteSpan run(reinterpret_cast<const std::byte*>(bytes), static_cast<std::size_t>(length));
    try {
        return decode(run, encoding, isExternalRepresentation);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char* string,
                                      CFStringEncoding encoding) {
    if (string == nullptr) return nullptr;
    return CFStringCreateWithBytes(allocator, reinterpret_cast<const UInt8*>(string),
                                   static_cast<CFIndex>(std::strlen(string)), encoding, false);
}

CFStringRef CFStringCreateWithPascalString(CFAllocatorRef allocator, const unsigned char* string,
                                           CFStringEncoding encoding) {
    if (string == nullptr) return nullptr;
    return CFStringCreateWithBytes(allocator, string + 1, string[0], encoding, false);
}

void CFStringAppendCString(CFMutableStringRef string, const char* appended,
                           CFStringEncoding encoding) {
    const CFStringRef text = CFStringCreateWithCString(nullptr, appended, encoding);
    if (text == nullptr) return;
    CFStringAppend(string, text);
    CFRelease(text);
}

const char* CFStringGetCStringPtr(CFStringRef string, CFStringEncoding encoding) {
    if (string == nullptr || string->isWide) return nullptr;
    if (encoding == kCFStringEncodingMacRoman) return string->bytes;
    const bool containsASCII =
        encoding == kCFStringEncodingASCII || encoding == kCFStringEncodingUTF8;
    return containsASCII && osa::isASCII(osa::asBytes(string->macRoman())) ? string->bytes
                                                                           : nullptr;
}

CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding encoding,
                         UInt8 lossByte, Boolean isExternalRepresentation, UInt8* buffer,
                         CFIndex bufferSize, CFIndex* usedBytes) {
    if (usedBytes != nullptr) *usedBytes = 0;
    if (string == nullptr || range.location < 0 || range.length <= 0 ||
        range.location > string->length || range.length > string->length - range.location)
        return 0;
    try {
        const std::u16string units = osa::unitsOf(string, static_cast<std::size_t>(range.location),
                                                  static_cast<std::size_t>(range.length));
        const std::string mark = isExternalRepresentation ? markFor(encoding) : std::string();
        std::string bytes;
        std::size_t converted = osa::encodeText(units, encoding, lossByte, bytes);
        if (buffer != nullptr) {
            const auto size = static_cast<std::size_t>(bufferSize < 0 ? 0 : bufferSize);
            if (size < mark.size()) return 0;
            if (bytes.size() > size - mark.size())
                converted = fitInto(std::u16string_view(units).substr(0, converted), encoding,
                                    lossByte, size - mark.size(), bytes);
            std::copy(mark.begin(), mark.end(), buffer);
            std::copy(bytes.begin(), bytes.end(), buffer + mark.size());
        }
        if (usedBytes != nullptr) *usedBytes = static_cast<CFIndex>(mark.size() + bytes.size());
        return static_cast<CFIndex>(converted);
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding) {
    const auto perUnit = static_cast<CFIndex>(osa::maximumBytesPerUnit(encoding));
    if (perUnit == 0 || length > INT64_MAX / perUnit) return kCFNotFound;
    return length * perUnit;
}

Boolean CFStringGetPascalString(CFStringRef string, unsigned char* buffer, CFIndex bufferSize,
                                CFStringEncoding encoding) {
    if (string == nullptr || buffer == nullptr || bufferSize < 1) return false;
    buffer[0] = 0;
    std::string bytes;
    if (string->length > 255 || !encodeAll(string, encoding, bytes)) return false;
    if (bytes.size() > 255 || static_cast<CFIndex>(bytes.size()) >= bufferSize) return false;
    buffer[0] = static_cast<unsigned char>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), buffer + 1);
    return true;
}

Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize,
                           CFStringEncoding encoding) {
    if (string == nullptr || buffer == nullptr || bufferSize < 1) return false;
    buffer[0] = 0;
    try {
        std::string bytes;
        if (!encodeAll(string, encoding, bytes)) return false;
        if (static_cast<CFIndex>(bytes.size()) >= bufferSize) return false;
        std::memcpy(buffer, bytes.c_str(), bytes.size() + 1);
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

CFDataRef CFStringCreateExternalRepresentation(CFAllocatorRef allocator, CFStringRef string,
                                               CFStringEncoding encoding, UInt8 lossByte) {
    if (string == nullptr || !osa::isEncodingKnown(encoding)) return nullptr;
    try {
        const std::u16string units = osa::unitsOf(string);
        std::string bytes = units.empty() ? std::string() : markFor(encoding);
        if (osa::encodeText(units, encoding, lossByte, bytes) != units.size()) return nullptr;
        return CFDataCreate(allocator, reinterpret_cast<const UInt8*>(bytes.data()),
                            static_cast<CFIndex>(bytes.size()));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

CFStringEncoding CFStringGetSystemEncoding() {
    const CFStringEncoding chosen = chosenSystemEncoding.load(std::memory_order_relaxed);
    return chosen == kUnset ? CFStringEncoding{kCFStringEncodingMacRoman} : chosen;
}

Boolean OSASetSystemEncoding(CFStringEncoding encoding) {
    if (!osa::isEncodingKnown(encoding) || isUTF16(encoding) || isUTF32(encoding)) return false;
    CFStringEncoding expected = kUnset;
    return chosenSystemEncoding.compare_exchange_strong(expected, encoding);
}

Boolean CFStringIsEncodingAvailable(CFStringEncoding encoding) {
    return osa::isEncodingKnown(encoding);
}

CFStringEncoding CFStringConvertWindowsCodepageToEncoding(UInt32 codepage) {
    return osa::encodingForWindowsCodePage(codepage);
}

CFStringEncoding CFStringConvertIANACharSetNameToEncoding(CFStringRef name) {
    return osa::encodingForCharsetName(osa::utf8Of(name));
}
