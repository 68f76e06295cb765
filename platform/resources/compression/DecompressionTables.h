// The word tables of the three decompressors.
#pragma once

#include <cstdint>

namespace osa {

inline constexpr unsigned kFirstWord0 = 0x4B;  // the tag that stands for kWords0[0]
inline constexpr unsigned kFirstWord1 = 0xD5;

extern const std::uint16_t kWords0[0xFE - kFirstWord0];
extern const std::uint16_t kWords1[0xFE - kFirstWord1];
extern const std::uint16_t kWords2[256];

}  // namespace osa
