// The byte formats that wrap forks, built here from their parts.
#include "platform/files/ForkContainer.h"
#include "platform/files/formats/AppleDouble.h"
#include "tests/platform/files/FileFixture.h"

namespace osa::test {
namespace {

using ForkFormats = FileFixture;

std::shared_ptr<const ByteSource> source(const std::string& content) {
    return std::make_shared<MemorySource>(asBytes(content));
}

struct MacBinaryBuilder {
    int generation = 3;
    std::string data = "Hello\r", fork = "resources";
    std::uint16_t secondHeader = 0;
    std::uint32_t promisedData = 0;  ///< instead of the data's true length
    std::uint8_t spoiled = 0;        ///< put at offset 74, which must be 0

    std::string build() const {
        ByteWriter file;
        file.u8(0).pascalString("Hi.txt").fill(65 - file.size());
        file.fourCC(FourCC("TEXT")).fourCC(FourCC("ttxt")).u8(0x01).u8(spoiled).fill(8);
        file.u32(promisedData != 0 ? promisedData : static_cast<std::uint32_t>(data.size()));
        file.u32(static_cast<std::uint32_t>(fork.size())).fill(8).fill(2);
        file.u8(generation >= 2 ? 0x40 : 0);
        if (generation == 3) file.fourCC(FourCC("mBIN"));
        file.fill(120 - file.size()).u16(secondHeader);
        file.fill(2).fill(4);
        if (generation >= 2) file.patch(124, checksum(file.view().first(124)), 2);
        file.fill((secondHeader + 127u) / 128 * 128);
        return file.text(data).align(128).text(fork).align(128).takeText();
    }

    static std::uint16_t checksum(ByteSpan bytes) {
        unsigned sum = 0;
        for (const std::byte byte : bytes) {
            for (unsigned bit = 8; bit-- > 0;) {
                const unsigned in = std::to_integer<unsigned>(byte) >> bit & 1;
                sum = (sum << 1 ^ ((sum >> 15 ^ in) != 0 ? 0x1021 : 0)) & 0xFFFF;
            }
        }
        return static_cast<std::uint16_t>(sum);
    }
};

TEST_F(ForkFormats, TellsWhatAFileIs) {
    using Kind = ForkContainer::Kind;
    EXPECT_EQ(MacBinaryBuilder::checksum(asBytes("123456789")), 0x31C3);
    const std::string info = finderInfo(FourCC("TEXT"), FourCC("ttxt"));
    const AppleDoubleBuilder single{.entries = {{3, "Hi.txt"}, {1, "Hello\r"}, {9, info}},
                                    .magic = 0x00051600};
    std::string crossed = resourceFork("hi");
    crossed[7] = 2;  // the map would begin inside the header
    const std::string plain(200, 'p');
    const std::tuple<const char*, std::string, Kind, int, std::string, std::string> rows[] = {
        {"nothing", "", Kind::plain, 0, "", ""},
        {"other bytes", plain, Kind::plain, 0, plain, ""},
        {"zeros", std::string(4096, '\0'), Kind::plain, 0, std::string(4096, '\0'), ""},
        {"a side file", appleDouble(info, "fork"), Kind::appleDouble, 0, "", "fork"},
        {"both forks and a name in one", single.build(), Kind::appleSingle, 0, "Hello\r", ""},
        {"MacBinary III", MacBinaryBuilder().build(), Kind::macBinary, 3, "Hello\r", "resources"},
        {"MacBinary II", MacBinaryBuilder{.generation = 2}.build(), Kind::macBinary, 2, "Hello\r",
         "resources"},
        {"MacBinary I", MacBinaryBuilder{.generation = 1}.build(), Kind::macBinary, 1, "Hello\r",
         "resources"},
        {"a second header before the forks", MacBinaryBuilder{.secondHeader = 5}.build(),
         Kind::macBinary, 3, "Hello\r", "resources"},
        {"no fork but the resource fork", MacBinaryBuilder{.data = ""}.build(), Kind::macBinary, 3,
         "", "resources"},
        {"a bare resource fork", resourceFork("hi"), Kind::resourceFork, 0, "", resourceFork("hi")},
        {"a resource map inside the header", crossed, Kind::plain, 0, crossed, ""},
    };
    for (const auto& [name, content, kind, generation, data, fork] : rows) {
        SCOPED_TRACE(name);
        const auto found = openForkContainer(source(content));
        ASSERT_TRUE(found.ok());
        EXPECT_EQ(found->kind, kind);
        EXPECT_EQ(found->generation, generation);
        EXPECT_EQ(textOf(*found->dataFork), data);
        EXPECT_EQ(textOf(*found->resourceFork), fork);
        if (kind == Kind::plain || kind == Kind::resourceFork) continue;
        const FinderInfo read = basicFinderInfo(found->finderInfo, false);
        EXPECT_EQ(+read.fdType, FourCC("TEXT"));
        EXPECT_EQ(read.fdFlags, generation == 0 ? 0 : generation == 1 ? 0x100 : 0x140);
        EXPECT_EQ(found->name, kind == Kind::appleDouble ? "" : "Hi.txt");
    }
}

TEST_F(ForkFormats, DoesNotTakeALikenessForMacBinary) {
    for (const MacBinaryBuilder& builder :
         {MacBinaryBuilder{.spoiled = 1}, MacBinaryBuilder{.generation = 1, .promisedData = 900},
          MacBinaryBuilder{.generation = 1, .promisedData = 0xFFFFFFF0},
          MacBinaryBuilder{.generation = 1, .data = "", .fork = ""}}) {
        const auto found = openForkContainer(source(builder.build()));
        ASSERT_TRUE(found.ok());
        EXPECT_EQ(found->kind, ForkContainer::Kind::plain);
    }
    const auto cut = openForkContainer(source(MacBinaryBuilder().build().substr(0, 260)));
    ASSERT_TRUE(cut.ok());
    EXPECT_EQ(textOf(*cut->dataFork), "Hello\r");
    EXPECT_EQ(textOf(*cut->resourceFork), "reso") << "a checksum is believed, the lengths are cut";
}

TEST_F(ForkFormats, ListsAttributesBehindTheFinderInformation) {
    // One entry, so the Finder information lies at 38 and the attribute block at 72.
    ByteWriter block;
    block.fill(34).text("ATTR").u32(0).u32(0).u32(0).u32(0).fill(12).u16(0).u16(2);
    block.u32(150).u32(2).u16(0).u8(4).text(std::string("abc\0", 4)).fill(1);
    block.u32(152).u32(9999).u16(0).u8(3).text(std::string("de\0", 3));
    block.fill(150 - 38 - block.size()).text("hithere");
    const std::string file = AppleDoubleBuilder{.entries = {{9, block.takeText()}}}.build();
    const auto parsed = AppleDouble::parse(source(file));
    ASSERT_TRUE(parsed.ok());
    const auto attributes = parsed->attributes();
    ASSERT_TRUE(attributes.ok());
    ASSERT_EQ(attributes->size(), 2u);
    EXPECT_EQ((*attributes)[0].name, "abc");
    EXPECT_EQ(file.substr((*attributes)[0].range.offset, (*attributes)[0].range.length), "hi");
    EXPECT_EQ((*attributes)[1].name, "de");
    EXPECT_EQ((*attributes)[1].range.length, 5u) << "cut to what there is";
}

TEST_F(ForkFormats, CountsDatesFromBothEpochs) {
    ByteWriter modern;
    modern.u32(0).u32(0x80000000).u32(0xFFFFFFFF).u32(1);
    ByteWriter old;
    old.u32(2082844800).u32(0).u32(1).u32(0);
    const std::tuple<const char*, AppleDoubleBuilder, AppleDouble::Dates> rows[] = {
        {"version 2", {.entries = {{8, modern.takeText()}}}, {946684800, {}, 946684799, 946684801}},
        {"version 1",
         {.entries = {{7, old.takeText()}}, .version = 0x10000},
         {0, {}, -2082844799, {}}},
        {"cut short", {.entries = {{8, std::string(6, '\0')}}}, {946684800, {}, {}, {}}},
        {"none", {.entries = {{2, "fork"}}}, {}},
    };
    for (const auto& [name, file, wantedDates] : rows) {
        SCOPED_TRACE(name);
        const auto parsed = AppleDouble::parse(source(file.build()));
        ASSERT_TRUE(parsed.ok());
        const auto dates = parsed->dates();
        ASSERT_TRUE(dates.ok());
        EXPECT_EQ(dates->created, wantedDates.created);
        EXPECT_EQ(dates->modified, wantedDates.modified);
        EXPECT_EQ(dates->backedUp, wantedDates.backedUp);
        EXPECT_EQ(dates->accessed, wantedDates.accessed);
    }
}

}  // namespace
}  // namespace osa::test
