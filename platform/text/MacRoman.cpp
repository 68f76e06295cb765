// Mac Roman: the table by bytes, by units, and its upper case.
#include "platform/text/MacRoman.h"

#include "platform/text/SingleByteSet.h"

namespace osa {

namespace {

constexpr char16_t upperOf(char16_t unit) {
    if (unit >= u'a' && unit <= u'z') return static_cast<char16_t>(unit - 0x20);
    if (unit >= 0xE0 && unit <= 0xFE && unit != 0xF7) return static_cast<char16_t>(unit - 0x20);
    if (unit == 0x0153) return 0x0152;
    if (unit == 0x00FF) return 0x0178;
    return unit;
}

constexpr std::array<unsigned char, 256> makeUpper() {
    std::array<unsigned char, 256> upper{};
    for (unsigned i = 0; i < 256; ++i) {
        const int byte = kMacRomanSet.byteOf(upperOf(kMacRomanSet.units()[i]));
        upper[i] = static_cast<unsigned char>(byte < 0 ? static_cast<int>(i) : byte);
    }
    return upper;
}

constexpr std::array<unsigned char, 256> kUpper = makeUpper();

}  // namespace

constinit const std::array<char16_t, 256> kMacRomanToUnicode = kMacRomanSet.units();

int macRomanFromUnicode(char16_t unit) {
    return kMacRomanSet.byteOf(unit);
}

unsigned char macRomanUppercase(unsigned char byte) {
    return kUpper[byte];
}

}  // namespace osa
