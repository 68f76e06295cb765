// Decompressor 0: code and other data made of 16-bit words.
#include "platform/resources/compression/DecompressionTables.h"
#include "platform/resources/compression/Decompressor.h"

namespace osa {
namespace {

/// The jump table of a code segment: after each entry's offset the same six bytes of code, which
/// push the segment's number and call the loader.
void jumpTable(ByteReader& input, ExpandedBytes& output) {
    constexpr std::uint32_t kPushWord = 0x3F3C;
    constexpr std::uint32_t kLoadSegment = 0xA9F0;
    const std::int32_t segment = variableInteger(input);
    const auto loader = [&] {
        output.u16(kPushWord);
        output.u16(static_cast<std::uint32_t>(segment));
        output.u16(kLoadSegment);
    };
    loader();
    const std::int32_t count = variableInteger(input);
    auto address = static_cast<std::uint32_t>(variableInteger(input));
    if (!input.ok() || count < 1) return output.fail();
    for (std::int32_t i = 0; i < count && input.ok() && output.ok(); ++i) {
        if (i > 0) address += static_cast<std::uint32_t>(variableInteger(input)) - 6;
        output.u16(address);
        loader();
    }
}

/// Numbers given as differences: words by a signed byte each, long words by variable integers.
void differences(ByteReader& input, ExpandedBytes& output, bool longWords) {
    auto value = static_cast<std::uint32_t>(variableInteger(input));
    longWords ? output.u32(value) : output.u16(value);
    const std::int32_t count = variableInteger(input);
    if (count < 0) return output.fail();
    for (std::int32_t i = 0; i < count && input.ok() && output.ok(); ++i) {
        value += static_cast<std::uint32_t>(longWords ? variableInteger(input) : input.s8());
        longWords ? output.u32(value) : output.u16(value);
    }
}

void extended(ByteReader& input, ExpandedBytes& output) {
    switch (input.u8()) {
        case 0x00:
            return jumpTable(input, output);
        case 0x02:
            return repeatValue(input, output, 1);
        case 0x03:
            return repeatValue(input, output, 2);
        case 0x04:
            return differences(input, output, false);
        case 0x06:
            return differences(input, output, true);
        default:
            return output.fail();
    }
}

}  // namespace

void decompress0(ByteReader& input, ExpandedBytes& output) {
    StoredRuns stored;
    while (input.ok() && output.ok()) {
        const unsigned tag = input.u8();
        if (!input.ok() || tag == 0xFF) return;
        if (tag < 0x20) {
            const unsigned words = (tag & 0x0F) == 0 ? input.u8() : tag & 0x0F;
            const ByteSpan run = input.bytes(std::size_t{2} * words);
            output.bytes(tag < 0x10 ? run : stored.remember(run));
        } else if (tag < 0x22) {
            output.bytes(stored.at(0x28 + ((tag - 0x20) << 8 | input.u8()), output));
        } else if (tag == 0x22) {
            output.bytes(stored.at(0x28 + std::size_t{input.u16()}, output));
        } else if (tag < kFirstWord0) {
            output.bytes(stored.at(tag - 0x23, output));
        } else if (tag < 0xFE) {
            output.u16(kWords0[tag - kFirstWord0]);
        } else {
            extended(input, output);
        }
    }
}

}  // namespace osa
