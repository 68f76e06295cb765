// Builds AppleDouble files from Finder information and a resource fork.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <string>

#include "platform/base/ByteWriter.h"

namespace osa::samples {

/// Finder information as it is on disk: type, creator, flags, the rest zero; 32 bytes.
inline std::string finderInfoBytes(FourCharCode type, FourCharCode creator, std::uint16_t flags) {
    ByteWriter info;
    info.fourCC(type).fourCC(creator).u16(flags).fill(22);
    return info.takeText();
}

/// A version 2 side file: Finder information (32 bytes) and resource fork.
inline std::string appleDouble(const std::string& finderInfo, const std::string& fork) {
    constexpr std::uint32_t kFinderInfoAt = 26 + 2 * 12;
    ByteWriter file;
    file.u32(0x00051607).u32(0x00020000).text("Mac OS X        ").u16(2);
    file.u32(9).u32(kFinderInfoAt).u32(32);
    file.u32(2).u32(kFinderInfoAt + 32).u32(static_cast<std::uint32_t>(fork.size()));
    file.text(finderInfo).text(fork);
    return file.takeText();
}

}  // namespace osa::samples
