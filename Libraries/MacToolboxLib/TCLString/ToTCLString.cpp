// Conversions to the library's own string.
#include <CoreServices/TextUtils.h>

#include <cstring>

#include "Libraries/MacToolboxLib/TBUtilities/Assertions.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/MacToolboxLib/TBUtilities/SCoreFoundation.h"
#include "Libraries/MacToolboxLib/TCLString/TCLString.h"

namespace {

constexpr char kUnit[] = "Libraries/MacToolboxLib/TCLString";

/// Each byte as a signed number, widened: 7-bit text keeps its value, 0xE9 becomes 0xFFE9.
TCLString WidenedBytes(const char* bytes, UInt32 length) {
    TCLString units;
    units.reserve(length);
    for (UInt32 i = 0; i < length; ++i) {
        units.push_back(static_cast<UniChar>(static_cast<signed char>(bytes[i])));
    }
    return units;
}

}  // namespace

const TCLString gEmptyString;

TCLString ToTCLString(CFStringRef s) {
    TCLString units;
    FromCFString(s, units, kCFStringEncodingUnicode);
    return units;
}

TCLString ToTCLString(const HFSUniStr255& name) {
    return TCLString(name.unicode, NameLength(name));
}

TCLString ToTCLString(const AEDesc* desc) {
    TB_ASSERT(kUnit, desc);
    TB_ASSERT_TEXT(kUnit, desc != nullptr && desc->descriptorType == typeUnicodeText,
                   "desc->descriptorType == typeUnicodeText");
    const Size size = AEGetDescDataSize(desc);
    // The whole size is asked for, so an odd last byte needs room as well.
    TCLString units((static_cast<std::size_t>(size) + 1) / sizeof(UniChar), 0);
    FailOSErr(AEGetDescData(desc, units.data(), size));
    units.resize(static_cast<std::size_t>(size) / sizeof(UniChar));
    return units;
}

TCLString ToTCLString(const char* bytes, UInt32 length, UInt32 encoding) {
    if (encoding == kCFStringEncodingASCII) return WidenedBytes(bytes, length);
    const SCoreFoundation<CFStringRef> string(ToCFString(bytes, length, encoding));
    return ToTCLString(string.Get());
}

TCLString ToTCLString(const char* cstr, UInt32 encoding) {
    return ToTCLString(cstr, static_cast<UInt32>(std::strlen(cstr)), encoding);
}

TCLString OSTypeToTCLString(OSType code) {
    const char bytes[4] = {static_cast<char>(code >> 24), static_cast<char>(code >> 16),
                           static_cast<char>(code >> 8), static_cast<char>(code)};
    return ToTCLString(bytes, sizeof bytes, kCFStringEncodingMacRoman);
}

TCLString ToTCLString(SInt32 n) {
    Str255 digits;
    NumToString(n, digits);
    return ToTCLString(reinterpret_cast<const char*>(digits + 1), digits[0],
                       kCFStringEncodingASCII);
}
