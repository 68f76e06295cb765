// MacBinary files: a header of 128 bytes, then the forks, each filled up to a multiple of 128.
#pragma once

#include <optional>
#include <string>

#include "platform/base/CheckedRange.h"
#include "platform/files/formats/FinderInfoBytes.h"

namespace osa {

struct MacBinaryHeader {
    int generation = 0;  ///< 1 to 3
    std::string name;
    CheckedRange dataFork;
    CheckedRange resourceFork;
    FinderInfoBytes finderInfo{};
};

/// None when the first 128 bytes of a file of `fileSize` bytes are no such header. Generation 1 has
/// no checksum: it is taken for one only when all lengths agree with the file's.
std::optional<MacBinaryHeader> parseMacBinary(ByteSpan header, std::uint64_t fileSize);

}  // namespace osa
