// Unicode Utilities: comparing text the way people sort it.
#pragma once

#include <CoreServices/MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef OptionBits UCCollateOptions;

// clang-format off
enum {
    kUCCollateComposeInsensitiveMask   = 0x00000002,  ///< always so here: composed and decomposed forms are equal
    kUCCollateWidthInsensitiveMask     = 0x00000004,  ///< half-width and full-width forms are equal
    kUCCollateCaseInsensitiveMask      = 0x00000008,
    kUCCollatePunctuationSignificantMask = 0x00008000,  ///< else punctuation is passed over
    kUCCollateDigitsOverrideMask       = 0x00010000,  ///< digits are ordered as the next option says
    kUCCollateDigitsAsNumberMask       = 0x00020000   ///< "9" comes before "10"
};
// clang-format on

/// Compares by the root order of the Unicode Collation Algorithm: `order` becomes negative, 0 or
/// positive, `equivalent` whether it is 0; either may be null, not both. Diacritics always count.
/// With case and width both insensitive, hiragana and katakana, small kana and ligatures are equal
/// to their like, too. Control characters say nothing; malformed UTF-16 has a place in the order.
/// Numbers count up to 254 digits. Meant for names and lines: text of combining marks alone takes
/// the square of its length in time. paramErr: null text with a length, 2^29 units or more, or
/// options that are not above; memFullErr: no collator.
OSA_PLATFORM_EXPORT OSStatus UCCompareTextDefault(UCCollateOptions options, const UniChar* text1Ptr,
                                                  UniCharCount text1Length, const UniChar* text2Ptr,
                                                  UniCharCount text2Length, Boolean* equivalent,
                                                  SInt32* order);

#ifdef __cplusplus
}
#endif
