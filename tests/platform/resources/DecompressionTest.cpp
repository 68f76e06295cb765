// Expanding compressed resources: each rule of the three schemes once, and what must be refused.
#include "platform/resources/ResourceDecompression.h"

#include "platform/base/ByteWriter.h"
#include "tests/support/Test.h"

namespace osa {
namespace {

std::string fromHex(std::string_view hex) {
    std::string bytes, digits;
    for (const char c : hex) {
        if (c == ' ') continue;
        digits += c;
        if (digits.size() < 2) continue;
        bytes += static_cast<char>(std::stoi(digits, nullptr, 16));
        digits.clear();
    }
    return bytes;
}

/// `parameters`: the entries and flags of decompressor 2.
std::string compressed(int decompressor, std::size_t length, std::string_view hex,
                       unsigned parameters = 0) {
    ByteWriter writer;
    writer.u32(0xA89F6572).u16(18).u16(decompressor == 2 ? 0x0901 : 0x0801);
    writer.u32(static_cast<std::uint32_t>(length));
    if (decompressor != 2) writer.u16(0);
    writer.u16(static_cast<std::uint16_t>(decompressor)).u16(0);
    if (decompressor == 2) writer.u16(static_cast<std::uint16_t>(parameters));
    return writer.text(fromHex(hex)).takeText();
}

struct Row {
    const char* row;
    int decompressor;
    const char* input;
    const char* output;      // null: refused
    std::size_t length = 0;  // promised; 0: that of `output`
    unsigned parameters = 0;
};

const Row kRows[] = {
    {"0: literals, stored and asked for again", 0, "01 4142 11 4344 23 00 01 4546 FF",
     "4142 4344 4344 4546"},
    {"0: words of the table", 0, "4B 4C FD FF", "0000 4EBA 4841"},
    {"0: an odd length is cut", 0, "02 41424300 FF", "414243"},
    {"0: jump table", 0, "FE 00 05 02 10 08 FF",
     "3F3C0005A9F0 0010 3F3C0005A9F0 0012 3F3C0005A9F0"},
    {"0: repeated byte and word", 0, "FE 02 41 02 01 4242 FE 03 C1 23 01 FF",
     "414141 4242 01230123 00", 9},
    {"0: differences, negative too", 0, "FE 04 10 02 FE 05 FE 06 20 01 BF FF FF",
     "0010 000E 0013 00000020 0000001F"},
    {"0: late stored runs by number", 0, "21 00 FF", nullptr, 2},
    {"0: no end mark", 0, "01 4142", nullptr, 2},
    {"0: unknown extension", 0, "FE 07 FF", nullptr, 2},
    {"0: shorter than promised", 0, "01 4142 FF", nullptr, 4},
    {"0: longer than promised", 0, "02 41424344 FF", nullptr, 2},
    {"0: two thousand million repetitions", 0, "FE 02 41 FF 7FFFFFFF FF", nullptr, 100},
    {"0: fewer than no repetitions", 0, "FE 02 41 FF FFFFFFF0 FF", nullptr, 100},
    {"1: literals, stored and asked for again", 1, "01 4142 12 434445 20 D0 01 46 D1 01 47 21 FF",
     "4142 434445 434445 46 47 47"},
    {"1: table and repetition", 1, "D5 DA FE 02 41 01 FF", "0000 3E01 4141"},
    {"1: tag without meaning", 1, "D3 FF", nullptr, 2},
    {"2: words of the table, then the odd byte", 2, "01 07 41", "0008 7000 41"},
    {"2: own table", 2, "4142 4344 01 00", "4344 4142", 0, 0x0101},
    {"2: index behind the own table", 2, "4142 4344 02", nullptr, 2, 0x0101},
    {"2: tagged, table and literals", 2, "80 01 4142 43", "0008 4142 43", 0, 0x0002},
    {"2: tagged, odd byte where a tag would be", 2, "FF 0101010101010101 41",
     "0008000800080008 0008000800080008 41", 0, 0x0002},
    {"3: not built in", 3, "00", nullptr, 1},
};

TEST(Decompression, FollowsEachRule) {
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.row);
        std::string expected = fromHex(row.output == nullptr ? "" : row.output);
        const std::size_t length = row.length != 0 ? row.length : expected.size();
        expected.resize(row.output == nullptr ? 0 : length);
        const auto data = compressed(row.decompressor, length, row.input, row.parameters);
        ASSERT_TRUE(isCompressedData(asBytes(data)));
        EXPECT_EQ(expandedLength(asBytes(data)), length);
        const auto result = expandResource(asBytes(data));
        EXPECT_EQ(result.status(), row.output == nullptr ? CantDecompress : noErr);
        if (result) {
            EXPECT_EQ(asText(*result), expected);
        }
    }
}

TEST(Decompression, APromiseAllocatesNothing) {
    const auto data = compressed(0, 0xFFFFFFF0, "FE 02 41 FF 7FFFFFFF FF");
    EXPECT_EQ(expandResource(asBytes(data)).status(), CantDecompress);
    EXPECT_FALSE(isCompressedData(asBytes("\xA8\x9F\x65\x72 short")));
}

}  // namespace
}  // namespace osa
