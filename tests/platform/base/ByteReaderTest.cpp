// The reader's bounds: sticky failure, confinement, and arithmetic at the ends of the number range.
#include "platform/base/ByteReader.h"

#include <cstdint>
#include <limits>

#include "platform/base/ByteSource.h"
#include "platform/base/ByteWriter.h"
#include "tests/support/Test.h"

namespace osa {
namespace {

constexpr std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();

TEST(CheckedRange, NeverWrapsAround) {
    __extension__ using Wide = unsigned __int128;
    constexpr std::uint64_t values[] = {0, 1, kMax / 2, kMax / 2 + 1, kMax - 1, kMax};
    for (const std::uint64_t offset : values) {
        for (const std::uint64_t length : values) {
            for (const std::uint64_t size : values) {
                const bool expected = static_cast<Wide>(offset) + length <= size;
                EXPECT_EQ((CheckedRange{offset, length}.fits(size)), expected)
                    << offset << "+" << length << " in " << size;
                const CheckedRange cut = CheckedRange{offset, length}.clamped(size);
                EXPECT_TRUE(cut.fits(size));
                EXPECT_LE(cut.length, length);
            }
        }
    }
}

TEST(ByteReader, StaysFailedAndGivesZerosAfterTheFirstReadThatDoesNotFit) {
    const unsigned char bytes[] = {0x81, 0x02, 0x03};
    ByteReader reader(bytes, sizeof bytes);
    EXPECT_EQ(reader.u16(), 0x8102);
    EXPECT_EQ(reader.u16(), 0);
    EXPECT_FALSE(reader.ok());
    EXPECT_EQ(reader.u8(), 0) << "one byte is left, but the record is broken";
    EXPECT_TRUE(reader.bytes(0).empty());
    EXPECT_FALSE(ByteReader(bytes, 3).sub(kMax, 2).ok());
    EXPECT_FALSE(ByteReader(bytes, 3).sub(2, 2).ok());
}

TEST(ByteReader, ReadsEachWidthInItsOrderAndSign) {
    ByteWriter writer;
    writer.u24(0xFE0102).littleEndian(0x01020304, 4).u16(0xFFF9).pascalString("ab").u64(kMax - 1);
    ByteReader reader(writer.view());
    EXPECT_EQ(reader.u24(), 0xFE0102U);
    EXPECT_EQ(reader.u32LittleEndian(), 0x01020304U);
    EXPECT_EQ(reader.s16(), -7);
    EXPECT_EQ(reader.pascalString(), "ab");
    EXPECT_EQ(reader.u64(), kMax - 1);
    EXPECT_TRUE(reader.ok() && reader.atEnd());
}

TEST(SubSource, IsCutToWhatTheWholeHoldsAndReadsNothingBeyond) {
    const auto whole = std::make_shared<MemorySource>(std::vector<std::byte>(10, std::byte{7}));
    const SubSource tail(whole, {8, 100});
    EXPECT_EQ(tail.size(), 2U);
    std::byte target[3];
    EXPECT_TRUE(tail.readExactly(0, std::span(target, 2)));
    EXPECT_FALSE(tail.readExactly(0, target));
    EXPECT_FALSE(tail.readExactly(kMax, std::span(target, 1)));
    EXPECT_EQ(SubSource(whole, {kMax, kMax}).size(), 0U);
    EXPECT_FALSE(readRange(*whole, {1, kMax}));
}

}  // namespace
}  // namespace osa
