// UCCompareTextDefault over the platform's collation.
#include <CoreServices/MacErrors.h>
#include <CoreServices/UnicodeUtilities.h>

#include <limits>
#include <new>

#include "platform/text/Collation.h"

namespace osa {
namespace {

constexpr UCCollateOptions kKnownOptions =
    kUCCollateComposeInsensitiveMask | kUCCollateWidthInsensitiveMask |
    kUCCollateCaseInsensitiveMask | kUCCollatePunctuationSignificantMask |
    kUCCollateDigitsOverrideMask | kUCCollateDigitsAsNumberMask;
constexpr UCCollateOptions kNumbers = kUCCollateDigitsOverrideMask | kUCCollateDigitsAsNumberMask;
constexpr UniCharCount kLongest = std::numeric_limits<SInt32>::max() / 4;

CollationRules rulesOf(UCCollateOptions options) {
    return {.ignoresCase = (options & kUCCollateCaseInsensitiveMask) != 0,
            .ignoresWidth = (options & kUCCollateWidthInsensitiveMask) != 0,
            .ignoresPunctuation = (options & kUCCollatePunctuationSignificantMask) == 0,
            .countsDigits = (options & kNumbers) == kNumbers};
}

bool isText(const UniChar* text, UniCharCount length) {
    return (text != nullptr || length == 0) && length <= kLongest;
}

std::u16string_view view(const UniChar* text, UniCharCount length) {
    return {reinterpret_cast<const char16_t*>(text), length};
}

}  // namespace
}  // namespace osa

OSStatus UCCompareTextDefault(UCCollateOptions options, const UniChar* text1Ptr,
                              UniCharCount text1Length, const UniChar* text2Ptr,
                              UniCharCount text2Length, Boolean* equivalent, SInt32* order) try {
    if (!osa::isText(text1Ptr, text1Length) || !osa::isText(text2Ptr, text2Length) ||
        (equivalent == nullptr && order == nullptr) || (options & ~osa::kKnownOptions) != 0)
        return paramErr;
    const auto compared = osa::compareText(osa::view(text1Ptr, text1Length),
                                           osa::view(text2Ptr, text2Length), osa::rulesOf(options));
    if (!compared) return memFullErr;
    if (equivalent != nullptr) *equivalent = *compared == 0 ? 1 : 0;
    if (order != nullptr) *order = *compared;
    return noErr;
} catch (const std::bad_alloc&) {
    return memFullErr;
}
