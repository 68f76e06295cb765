// Four-character codes as integers, and back to text for messages.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <cstddef>
#include <string>

namespace osa {

/// The code written as four characters: FourCC("TEXT"). Any other length does not compile.
template <std::size_t N>
constexpr FourCharCode FourCC(const char (&text)[N]) {
    static_assert(N == 5, "a four-character code has four characters");
    FourCharCode code = 0;
    for (int i = 0; i < 4; ++i) code = code << 8 | static_cast<unsigned char>(text[i]);
    return code;
}

/// The four bytes of `code`, most significant first, as they are (Mac Roman, any value).
std::string fourCCBytes(FourCharCode code);

/// `code` for people: 'TEXT', or 0x00000000 when a byte is not printable ASCII.
std::string describeFourCC(FourCharCode code);

}  // namespace osa
