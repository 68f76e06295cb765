// Replacing, quoting, comparing and changing the case of strings.
#include "Libraries/MacToolboxLib/TBUtilities/StringUtilities.h"

#include <CoreServices/UnicodeUtilities.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <span>

#include "Libraries/MacToolboxLib/TBUtilities/Assertions.h"

namespace {

constexpr char kUnit[] = "Libraries/MacToolboxLib/TBUtilities";
constexpr std::size_t kLongestPString = 255;
constexpr UCCollateOptions kFinderOrder =
    kUCCollateComposeInsensitiveMask | kUCCollateWidthInsensitiveMask |
    kUCCollateCaseInsensitiveMask | kUCCollatePunctuationSignificantMask |
    kUCCollateDigitsOverrideMask | kUCCollateDigitsAsNumberMask;
static_assert(kFinderOrder == 0x3800E);

// The parameters' markers.
const TCLString sP1 = ToTCLString("^0", kCFStringEncodingMacRoman);
const TCLString sP2 = ToTCLString("^1", kCFStringEncodingMacRoman);
const TCLString sP3 = ToTCLString("^2", kCFStringEncodingMacRoman);
const TCLString sP4 = ToTCLString("^3", kCFStringEncodingMacRoman);

struct Parameter {
    const TCLString& marker;
    const TCLString& value;
};

TCLString ReplaceMarkers(const TCLString& source, std::span<const Parameter> parameters) {
    TCLString result;
    result.reserve(source.size());
    std::size_t done = 0;
    std::size_t caret = 0;
    while ((caret = source.find('^', caret)) != TCLString::npos) {
        const auto found =
            std::find_if(parameters.begin(), parameters.end(), [&](const Parameter& parameter) {
                return source.compare(caret, parameter.marker.size(), parameter.marker) == 0;
            });
        if (found == parameters.end()) {
            ++caret;
            continue;
        }
        result.append(source, done, caret - done).append(found->value);
        done = caret += found->marker.size();
    }
    return result.append(source, done);
}

TCLString TextOrEmpty(CFStringRef string) {
    try {
        return ToTCLString(string);
    } catch (...) {
        return gEmptyString;
    }
}

template <typename String>
void MapRange(String& s, char first, char last, int distance) {
    for (auto& unit : s) {
        if (unit >= first && unit <= last) {
            unit = static_cast<typename String::value_type>(unit + distance);
        }
    }
}

template <typename String>
void MapToUppercase(String& s) {
    MapRange(s, 'a', 'z', 'A' - 'a');
}

template <typename String>
void MapToLowercase(String& s) {
    MapRange(s, 'A', 'Z', 'a' - 'A');
}

}  // namespace

TCLString ReplaceParams(const TCLString& templateText, const TCLString& p0) {
    return ReplaceMarkers(templateText, std::array{Parameter{sP1, p0}});
}

TCLString ReplaceParams(const TCLString& templateText, const TCLString& p0, const TCLString& p1) {
    return ReplaceMarkers(templateText, std::array{Parameter{sP1, p0}, Parameter{sP2, p1}});
}

TCLString ReplaceParams(const TCLString& templateText, const TCLString& p0, const TCLString& p1,
                        const TCLString& p2) {
    return ReplaceMarkers(templateText,
                          std::array{Parameter{sP1, p0}, Parameter{sP2, p1}, Parameter{sP3, p2}});
}

TCLString ReplaceParams(const TCLString& templateText, const TCLString& p0, const TCLString& p1,
                        const TCLString& p2, const TCLString& p3) {
    return ReplaceMarkers(templateText, std::array{Parameter{sP1, p0}, Parameter{sP2, p1},
                                                   Parameter{sP3, p2}, Parameter{sP4, p3}});
}

TCLString ReplaceStrings(const TCLString& source, const TCLString& key,
                         const TCLString& replacement) {
    TB_ASSERT(kUnit, key.size() > 0);
    if (key.empty()) return source;
    TCLString result;
    result.reserve(source.size());
    std::size_t done = 0;
    for (std::size_t found = 0; (found = source.find(key, done)) != TCLString::npos;) {
        result.append(source, done, found - done).append(replacement);
        done = found + key.size();
    }
    return result.append(source, done);
}

TCLString EscapeString(const TCLString& source) {
    static const TCLString sQuote = ToTCLString("\\\"", kCFStringEncodingMacRoman);
    TCLString result;
    result.reserve(source.size());
    for (const UniChar unit : source) {
        if (unit == '"') {
            result += sQuote;
        } else {
            result += unit;
        }
    }
    return result;
}

SInt32 CompareLikeTheFinder(const TCLString& a, const TCLString& b) {
    SInt32 order = 0;
    UCCompareTextDefault(kFinderOrder, a.data(), a.size(), b.data(), b.size(), nullptr, &order);
    return order;
}

SInt32 CompareLikeTheFinder(CFStringRef a, CFStringRef b) {
    return CompareLikeTheFinder(TextOrEmpty(a), TextOrEmpty(b));
}

void Uppercase(std::string& s) {
    MapToUppercase(s);
}

void Uppercase(TCLString& s) {
    MapToUppercase(s);
}

void Lowercase(std::string& s) {
    MapToLowercase(s);
}

void Lowercase(TCLString& s) {
    MapToLowercase(s);
}

std::string ToUppercase(const std::string& s) {
    std::string result = s;
    Uppercase(result);
    return result;
}

TCLString ToUppercase(const TCLString& s) {
    TCLString result = s;
    Uppercase(result);
    return result;
}

std::string ToLowercase(const std::string& s) {
    std::string result = s;
    Lowercase(result);
    return result;
}

TCLString ToLowercase(const TCLString& s) {
    TCLString result = s;
    Lowercase(result);
    return result;
}

void ConcatPStrings(unsigned char* dst, const unsigned char* src) {
    const std::size_t length = dst[0];
    const std::size_t count = std::min<std::size_t>(src[0], kLongestPString - length);
    // `src` may be `dst` itself, whose length byte must be written last.
    std::memmove(dst + 1 + length, src + 1, count);
    dst[0] = static_cast<unsigned char>(length + count);
}
