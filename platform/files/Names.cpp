// Converting leaf names.
#include "platform/files/Names.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>

#include "platform/text/TextConverter.h"

namespace osa {
namespace {

constexpr std::size_t kMostUnits = 255;
constexpr std::size_t kMostOldBytes = 63;

template <typename Text>
void exchangeSeparators(Text& text) {
    for (auto& unit : text) {
        if (unit == '/') {
            unit = ':';
        } else if (unit == ':') {
            unit = '/';
        }
    }
}

}  // namespace

Result<std::string> leafFromUnicode(const UniChar* units, UniCharCount length) {
    if (units == nullptr && length > 0) return Failure(paramErr);
    while (length > 0 && units[length - 1] == 0) --length;
    if (length == 0) return Failure(errFSMissingName);
    if (length > kMostUnits) return Failure(errFSNameTooLong);
    std::u16string name(units, units + length);
    if (name.find(u'\0') != std::u16string::npos) return Failure(bdNamErr);
    exchangeSeparators(name);
    // "/" is now only what was ":" before, which no Mac name holds.
    if (name.find(u'/') != std::u16string::npos) return Failure(bdNamErr);
    return utf8FromUTF16(name);
}

Result<HFSUniStr255> unicodeFromLeaf(std::string_view leaf) {
    std::u16string units;
    if (!utf16FromUTF8(leaf, units) || units.size() > kMostUnits) return Failure(bdNamErr);
    exchangeSeparators(units);
    HFSUniStr255 name{};
    name.length = static_cast<UInt16>(units.size());
    std::copy(units.begin(), units.end(), name.unicode);
    return name;
}

Result<std::string> macRomanFromLeaf(std::string_view leaf) {
    std::u16string units;
    std::string name;
    if (!utf16FromUTF8(leaf, units)) return Failure(bdNamErr);
    exchangeSeparators(units);
    if (encodeText(units, kTextEncodingMacRoman, 0, name) != units.size()) return Failure(bdNamErr);
    if (name.size() > kMostOldBytes) return Failure(bdNamErr);
    return name;
}

std::string leafFromMacRoman(std::string_view name) {
    std::u16string units;
    decodeText(asBytes(name), kTextEncodingMacRoman, units);
    exchangeSeparators(units);
    return utf8FromUTF16(units);
}

}  // namespace osa
