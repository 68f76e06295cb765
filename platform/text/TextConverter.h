// Converting runs of bytes in a named encoding to UTF-16 and back.
//
// Encodings are Core Foundation's 32-bit numbers. Mac Roman, NeXTSTEP Latin, Latin-1, ASCII and the
// Unicode forms are converted by this room itself; all others by ICU, which is known nowhere else.
// Byte-order marks mean nothing to the converters: callers that read outside text ask detectMark.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/base/ByteReader.h"

namespace osa {

enum : UInt32 {
    kTextEncodingMacRoman = 0,
    kTextEncodingUTF16 = 0x0100,  ///< host order
    kTextEncodingISOLatin1 = 0x0201,
    kTextEncodingWindowsLatin1 = 0x0500,
    kTextEncodingASCII = 0x0600,
    kTextEncodingNextStepLatin = 0x0B01,
    kTextEncodingUTF8 = 0x08000100,
    kTextEncodingUTF32 = 0x0C000100,  ///< host order
    kTextEncodingUTF16BE = 0x10000100,
    kTextEncodingUTF16LE = 0x14000100,
    kTextEncodingUTF32BE = 0x18000100,
    kTextEncodingUTF32LE = 0x1C000100,
    kTextEncodingInvalid = 0xFFFFFFFF,
};

/// Appends `bytes` as UTF-16 to `out`. False, with `out` as it was, when the bytes are malformed in
/// that encoding or the encoding is not known here. Mac Roman and Latin-1 never fail. Malformed
/// are: overlong, truncated and surrogate sequences in UTF-8, a byte of 0x80 or more in ASCII, a
/// UTF-16 run of odd size. Unpaired surrogates in UTF-16 are kept as they are.
bool decodeText(ByteSpan bytes, UInt32 cfEncoding, std::u16string& out);

/// Appends `units` in the given encoding to `out`, without a byte-order mark, and answers how many
/// units were converted. A character that the encoding cannot hold becomes `lossByte`, or ends the
/// conversion when that is 0. An unknown encoding converts nothing.
std::size_t encodeText(std::u16string_view units, UInt32 cfEncoding, UInt8 lossByte,
                       std::string& out);

/// Whether decodeText and encodeText know the encoding.
bool isEncodingKnown(UInt32 cfEncoding);

/// The most bytes that one UTF-16 unit can need in the encoding; 0 when it is unknown.
std::size_t maximumBytesPerUnit(UInt32 cfEncoding);

/// The encoding of a Windows or DOS code page number; the Mac scripts are 10000 and up, UTF-8 is
/// 65001. kTextEncodingInvalid when unknown.
UInt32 encodingForWindowsCodePage(unsigned codePage);

/// The encoding of a name registered for the Internet ("utf-8", "x-mac-roman", any case), or
/// kTextEncodingInvalid.
UInt32 encodingForCharsetName(std::string_view name);

/// The byte-order mark at the start of outside text.
struct ByteOrderMark {
    UInt32 encoding = kTextEncodingInvalid;
    std::size_t length = 0;  ///< 0: there is none
};
/// Looks for the marks of UTF-8, UTF-16 and, when asked, UTF-32, whose little-endian mark begins
/// like that of UTF-16.
ByteOrderMark detectMark(ByteSpan bytes, bool allowUTF32 = false);

/// UTF-8 of `units`; unpaired surrogates become U+FFFD. For paths, messages and logs.
std::string utf8FromUTF16(std::u16string_view units);
/// Appends strict UTF-8 as UTF-16; false, with `out` as it was, when malformed.
bool utf16FromUTF8(std::string_view bytes, std::u16string& out);
bool isASCII(ByteSpan bytes);

/// Simple case folding of one character, for comparisons that ignore case.
char32_t foldCase(char32_t character);

}  // namespace osa
