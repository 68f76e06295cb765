// The insides of CFString, and short ways between CFString and C++ strings for the platform's
// rooms.
#pragma once

#include <CoreFoundation/CFString.h>

#include <string>
#include <string_view>

#include "platform/base/ByteReader.h"
#include "platform/cf/CFRuntime.h"
#include "platform/text/MacRoman.h"

/// Units are kept as UTF-16 or, when `isWide` is false, as Mac Roman bytes with a zero behind them.
/// Immutable strings keep them in the same block of memory, behind this header.
struct __CFString : osa::CFObject {
    static const osa::ClassRecord kClass;

    /// A constant string of ASCII text that outlives it; see OSA_CONSTANT_STRING.
    constexpr explicit __CFString(std::string_view text)
        : CFObject(kClass, kImmortal),
          bytes(text.data()),
          length(static_cast<CFIndex>(text.size())) {}
    __CFString(bool wide, bool changeable, CFIndex unitCount)
        : CFObject(kClass), length(unitCount), isWide(wide), isMutable(changeable) {}

    union {
        const char* bytes = nullptr;
        const char16_t* units;
    };
    CFIndex length;
    bool isWide = false;
    bool isMutable = false;

    std::size_t size() const { return static_cast<std::size_t>(length); }
    std::string_view macRoman() const { return {bytes, size()}; }
    std::u16string_view wide() const { return {units, size()}; }
    char16_t at(std::size_t index) const {
        return isWide ? units[index]
                      : osa::kMacRomanToUnicode[static_cast<unsigned char>(bytes[index])];
    }
};

/// A mutable string: always wide; `units` follows `text`.
struct MutableString : __CFString {
    MutableString() : __CFString(true, true, 0) { textChanged(); }
    void textChanged() {
        units = text.data();
        length = static_cast<CFIndex>(text.size());
    }
    std::u16string text;
};

namespace osa {

/// Defines an exported constant string: OSA_CONSTANT_STRING(kSomeKey, "some key"); ASCII only. It
/// is there before any code runs.
#define OSA_CONSTANT_STRING(name, literal)                   \
    static constinit const __CFString name##Object{literal}; \
    extern "C" constinit const CFStringRef name = &name##Object

// New strings with one reference, or null: when memory fails, and from UTF-8 that is malformed.
CFStringRef createString(std::string_view utf8);
CFStringRef createString(std::u16string_view units);
CFStringRef createMacRomanString(ByteSpan bytes);

/// The units of a part of the string, which must lie inside it.
std::u16string unitsOf(CFStringRef string, std::size_t location, std::size_t count);
/// All units; nothing for null.
std::u16string unitsOf(CFStringRef string);
/// UTF-8 with U+FFFD for unpaired surrogates; nothing for null.
std::string utf8Of(CFStringRef string);
/// Whether the string is exactly this ASCII text.
bool isString(CFTypeRef ref, std::string_view ascii);

}  // namespace osa
