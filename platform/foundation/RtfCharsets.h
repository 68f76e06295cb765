// From the character-set numbers of rich text to encodings.
#pragma once

#include <CoreFoundation/CFBase.h>

namespace osa {

/// The code page of a font's character-set number; 0 for the document's own and for unknown
/// numbers.
unsigned codePageForRtfCharset(int charset);

/// The set of symbol fonts, whose bytes stand for the font's own pictures.
inline constexpr int kRtfSymbolCharset = 2;

}  // namespace osa
