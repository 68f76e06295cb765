// A single-byte character set made of ASCII and an upper half, both ways.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "platform/text/SingleByteTables.h"

namespace osa {

class SingleByteSet {
  public:
    explicit constexpr SingleByteSet(const UpperHalf& upper) {
        for (unsigned i = 0; i < 128; ++i) {
            units_[i] = static_cast<char16_t>(i);
            units_[i + 128] = upper[i];
            reverse_[i] = {upper[i], static_cast<std::uint8_t>(i + 128)};
        }
        std::sort(reverse_.begin(), reverse_.end(),
                  [](const Entry& a, const Entry& b) { return a.unit < b.unit; });
    }

    constexpr const std::array<char16_t, 256>& units() const { return units_; }

    /// The byte of a unit, or -1 when the set has none.
    constexpr int byteOf(char16_t unit) const {
        if (unit < 0x80) return unit;
        if (unit == 0xFFFD) return -1;
        const auto found =
            std::lower_bound(reverse_.begin(), reverse_.end(), unit,
                             [](const Entry& entry, char16_t key) { return entry.unit < key; });
        return found != reverse_.end() && found->unit == unit ? found->byte : -1;
    }

  private:
    struct Entry {
        char16_t unit = 0;
        std::uint8_t byte = 0;
    };
    std::array<char16_t, 256> units_{};
    std::array<Entry, 128> reverse_{};
};

inline constexpr SingleByteSet kMacRomanSet{kMacRomanUpperHalf};
inline constexpr SingleByteSet kNextStepLatinSet{kNextStepLatinUpperHalf};

}  // namespace osa
