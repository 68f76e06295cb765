// The Mac Roman character set as tables of our own.
//
// Converters elsewhere disagree about 0xBD, 0xC6, 0xDB and 0xF0; text kept since the classic system
// must not. Here they are U+03A9, U+2206, U+20AC and U+F8FF.
#pragma once

#include <array>

namespace osa {

/// Every byte as a UTF-16 unit.
extern const std::array<char16_t, 256> kMacRomanToUnicode;

/// The byte of a unit, or -1 when Mac Roman has none.
int macRomanFromUnicode(char16_t unit);

/// Upper case inside Mac Roman, diacritics kept: how the classic system compares names. Letters
/// whose upper case is not in the set stay.
unsigned char macRomanUppercase(unsigned char byte);

}  // namespace osa
