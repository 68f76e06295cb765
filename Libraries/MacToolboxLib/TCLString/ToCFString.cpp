// Conversions to Core Foundation strings, immutable and mutable.
#include <CoreServices/MacErrors.h>

#include "Libraries/MacToolboxLib/TBUtilities/Assertions.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/MacToolboxLib/TBUtilities/SCoreFoundation.h"
#include "Libraries/MacToolboxLib/TCLString/TCLString.h"

namespace {

constexpr char kUnit[] = "Libraries/MacToolboxLib/TCLString";

CFStringRef FailUnmade(CFStringRef made) {
    if (made == nullptr) FailOSErr(kTextMalformedInputErr);
    return made;
}

/// Releases `owned` whatever happens.
CFMutableStringRef MutableCopy(CFStringRef owned, OSStatus statusIfNone) {
    const SCoreFoundation<CFStringRef> immutable(owned);
    const CFMutableStringRef copy = CFStringCreateMutableCopy(kCFAllocatorDefault, 0, immutable);
    if (copy == nullptr) FailOSErr(statusIfNone);
    return copy;
}

}  // namespace

CFStringRef ToCFString(const unsigned char* s) {
    TB_ASSERT(kUnit, s);
    return FailUnmade(
        CFStringCreateWithPascalString(kCFAllocatorDefault, s, CFStringGetSystemEncoding()));
}

CFStringRef ToCFString(const UniChar* chars, UInt32 count) {
    TB_ASSERT(kUnit, chars);
    if (chars == nullptr) return FailUnmade(nullptr);
    return FailUnmade(CFStringCreateWithCharacters(kCFAllocatorDefault, chars, count));
}

CFStringRef ToCFString(const HFSUniStr255& name) {
    return ToCFString(name.unicode, NameLength(name));
}

CFStringRef ToCFString(const char* bytes, UInt32 length, UInt32 encoding) {
    TB_ASSERT(kUnit, bytes);
    if (bytes == nullptr) return FailUnmade(nullptr);
    return FailUnmade(CFStringCreateWithBytes(
        kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes), length, encoding, true));
}

CFStringRef ToCFString(const TCLString& string) {
    return ToCFString(string.data(), static_cast<UInt32>(string.size()));
}

CFMutableStringRef ToCFMutableString(const UniChar* chars, UInt32 count) {
    return MutableCopy(ToCFString(chars, count), memFullErr);
}

CFMutableStringRef ToCFMutableString(const char* bytes, UInt32 length, UInt32 encoding) {
    return MutableCopy(ToCFString(bytes, length, encoding), kTextMalformedInputErr);
}

CFMutableStringRef ToCFMutableString(const HFSUniStr255& name) {
    return MutableCopy(ToCFString(name), kTextMalformedInputErr);
}

CFMutableStringRef ToCFMutableString(const unsigned char* s) {
    return MutableCopy(ToCFString(s), kTextMalformedInputErr);
}
