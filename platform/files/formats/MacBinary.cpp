// Recognising and reading MacBinary headers.
#include "platform/files/formats/MacBinary.h"

#include <algorithm>

#include "platform/base/FourCC.h"

namespace osa {
namespace {

constexpr std::uint64_t kBlock = 128;
constexpr std::uint32_t kLongestFork = 0x7FFFFF;

constexpr std::uint64_t roundedUp(std::uint64_t length) {
    return (length + kBlock - 1) / kBlock * kBlock;
}

/// CRC-16/XMODEM.
std::uint16_t checksum(ByteSpan bytes) {
    std::uint16_t sum = 0;
    for (const std::byte byte : bytes) {
        sum ^= static_cast<std::uint16_t>(std::to_integer<unsigned>(byte) << 8);
        for (int bit = 0; bit < 8; ++bit) {
            sum = static_cast<std::uint16_t>((sum & 0x8000) != 0 ? sum << 1 ^ 0x1021 : sum << 1);
        }
    }
    return sum;
}

std::uint8_t byteAt(ByteSpan header, std::size_t offset) {
    return std::to_integer<std::uint8_t>(header[offset]);
}

bool isZero(ByteSpan bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](std::byte b) { return b == std::byte{0}; });
}

/// 0 when the header is of no generation.
int generationOf(ByteSpan header) {
    if (byteAt(header, 0) != 0 || byteAt(header, 74) != 0 || byteAt(header, 82) != 0) return 0;
    const std::uint8_t nameLength = byteAt(header, 1);
    if (nameLength < 1 || nameLength > 63) return 0;
    ByteReader reader(header);
    reader.seek(102);
    const bool isMarked = reader.fourCC() == FourCC("mBIN");
    reader.seek(124);
    const std::uint16_t sum = reader.u16();
    if (sum != 0 && sum == checksum(header.first(124))) return isMarked ? 3 : 2;
    return isZero(header.subspan(99, 29)) ? 1 : 0;
}

FinderInfoBytes finderInfoOf(ByteSpan header, int generation) {
    FinderInfoBytes info{};
    std::copy_n(header.begin() + 65, 9, info.begin());  // type, creator, upper half of the flags
    if (generation >= 2) info[9] = header[101];
    std::copy_n(header.begin() + 75, 6, info.begin() + 10);  // location, folder
    if (generation == 3) std::copy_n(header.begin() + 106, 2, info.begin() + 24);
    return info;
}

}  // namespace

std::optional<MacBinaryHeader> parseMacBinary(ByteSpan header, std::uint64_t fileSize) {
    if (header.size() < kBlock) return std::nullopt;
    header = header.first(kBlock);
    MacBinaryHeader parsed;
    parsed.generation = generationOf(header);
    if (parsed.generation == 0) return std::nullopt;

    ByteReader reader(header);
    reader.seek(1);
    parsed.name = reader.pascalString();
    reader.seek(83);
    const std::uint32_t dataLength = reader.u32();
    const std::uint32_t resourceLength = reader.u32();
    reader.seek(120);
    const std::uint64_t secondHeader = parsed.generation >= 2 ? reader.u16() : 0;
    if (dataLength > kLongestFork || resourceLength > kLongestFork) {
        if (parsed.generation == 1) return std::nullopt;
    }
    const std::uint64_t start = kBlock + roundedUp(secondHeader);
    parsed.dataFork = {start, dataLength};
    parsed.resourceFork = {start + roundedUp(dataLength), resourceLength};
    const bool isWhole = (dataLength == 0 || parsed.dataFork.fits(fileSize)) &&
                         (resourceLength == 0 || parsed.resourceFork.fits(fileSize));
    if (parsed.generation == 1) {
        const std::uint64_t end = parsed.resourceFork.offset + roundedUp(resourceLength);
        if (!isWhole || dataLength + resourceLength == 0 || fileSize > end) return std::nullopt;
    }
    parsed.dataFork = parsed.dataFork.clamped(fileSize);
    parsed.resourceFork = parsed.resourceFork.clamped(fileSize);
    parsed.finderInfo = finderInfoOf(header, parsed.generation);
    return parsed;
}

}  // namespace osa
