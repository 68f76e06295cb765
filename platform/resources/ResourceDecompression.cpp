// The header of compressed resources, and the choice of the decompressor.
//
//   0 u32 A8 9F 65 72
//   4 u16 header length, 18 (0 in some)
//   6 u16 0x0801 = type 8, 0x0901 = type 9
//   8 u32 expanded length
//  12     type 8: u8 working buffer, u8 slack, s16 decompressor, u16 0
//         type 9: s16 decompressor, 4 parameter bytes
#include "platform/resources/ResourceDecompression.h"

#include <CoreServices/MacErrors.h>

#include "platform/resources/compression/Decompressor.h"

namespace osa {
namespace {

constexpr std::size_t kHeaderLength = 18;
constexpr UInt32 kSignature = 0xA89F6572;
constexpr UInt16 kType8 = 0x0801;
constexpr UInt16 kType9 = 0x0901;

/// False when no built-in decompressor is asked for.
bool run(UInt16 type, ByteReader& parameters, ByteReader& input, ExpandedBytes& output) {
    if (type == kType8) {
        parameters.skip(2);
        switch (parameters.s16()) {
            case 0:
                decompress0(input, output);
                return true;
            case 1:
                decompress1(input, output);
                return true;
            default:
                return false;
        }
    }
    if (type != kType9 || parameters.s16() != 2) return false;
    parameters.skip(2);
    const unsigned entries = parameters.u8() + 1u;
    decompress2(input, entries, parameters.u8(), output);
    return true;
}

}  // namespace

std::int32_t variableInteger(ByteReader& input) {
    const unsigned first = input.u8();
    if (first < 0x80) return static_cast<std::int32_t>(first);
    if (first == 0xFF) return input.s32();
    return static_cast<std::int16_t>(((first - 0xC0) & 0xFF) << 8 | input.u8());
}

void repeatValue(ByteReader& input, ExpandedBytes& output, int width) {
    const auto value = static_cast<std::uint32_t>(variableInteger(input));
    const std::int64_t count = std::int64_t{variableInteger(input)} + 1;
    if (!input.ok() || count < 0) return output.fail();
    for (std::int64_t i = 0; i < count && output.ok(); ++i)
        width == 1 ? output.u8(value) : output.u16(value);
}

bool isCompressedData(ByteSpan data) {
    return data.size() >= kHeaderLength && ByteReader(data).u32() == kSignature;
}

UInt32 expandedLength(ByteSpan data) {
    if (!isCompressedData(data)) return 0;
    ByteReader header(data);
    header.seek(8);
    return header.u32();
}

Result<std::vector<std::byte>> expandResource(ByteSpan data) {
    if (!isCompressedData(data)) return Failure(CantDecompress);
    ByteReader header(data);
    header.skip(4);
    const UInt16 headerLength = header.u16();
    const UInt16 type = header.u16();
    const UInt32 length = header.u32();
    if ((headerLength != kHeaderLength && headerLength != 0) || length > kLargestExpansion)
        return Failure(CantDecompress);

    ExpandedBytes output(length);
    ByteReader input(data.subspan(kHeaderLength));
    if (!run(type, header, input, output) || !input.ok() || !output.ok() || output.size() < length)
        return Failure(CantDecompress);
    output.cutTo(length);
    return output.take();
}

}  // namespace osa
