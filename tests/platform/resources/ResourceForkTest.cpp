// Resource maps: what a sound one gives, and what of a damaged one is refused or still given.
#include "platform/resources/ResourceFork.h"

#include "tests/support/Test.h"
#include "tools/samples/ResourceForkBuilder.h"

namespace osa {
namespace {

Result<ResourceFork> open(std::vector<std::byte> bytes) {
    return ResourceFork::open(std::make_shared<MemorySource>(std::move(bytes)));
}

samples::ResourceForkBuilder sample() {
    samples::ResourceForkBuilder builder;
    builder.add('STR ', 128, "Hello", "Gr\x9F\xA7 dich", 0x20);  // "Grüß dich"
    builder.add('STR ', 129, "Hi", "");
    builder.add('TEXT', -7, "abc", nullptr, 0x08);
    builder.add('STR ', 130, "later", "gr\x86\xA7 DICH");
    return builder;
}

std::string dataOf(const ResourceFork& fork, const ResourceReference* reference) {
    if (reference == nullptr) return "(none)";
    const auto range = fork.dataRange(*reference);
    if (!range) return "(" + std::to_string(range.status()) + ")";
    return std::string(asText(*readRange(fork.source(), *range)));
}

TEST(ResourceFork, FindsByTypeAndIdAndByName) {
    const auto opened = open(sample().build());
    ASSERT_TRUE(opened.ok());
    const ResourceFork& fork = *opened;
    ASSERT_EQ(fork.types().size(), 2u) << "a repeated type counts once";
    EXPECT_EQ(fork.types()[0].count, 3u);
    EXPECT_EQ(fork.types()[1].code, FourCC("TEXT"));

    EXPECT_EQ(dataOf(fork, fork.find('STR ', SInt16{130})), "later");
    const ResourceReference* const negative = fork.find('TEXT', SInt16{-7});
    EXPECT_EQ(dataOf(fork, negative), "abc");
    EXPECT_EQ(negative->attributes, 0x08);
    EXPECT_FALSE(fork.name(*negative).has_value());
    EXPECT_EQ(fork.name(*fork.find('STR ', SInt16{129})), "");
    EXPECT_EQ(fork.find('str ', SInt16{128}), nullptr) << "types differ in case";

    const std::pair<const char*, const char*> names[] = {
        {"GR\x86\xA7 DICH", "Hello"},  // Ü is ü, and the first of two wins
        {"gru\xA7 dich", "(none)"},    // u is not ü
        {"", "Hi"},
        {"Gr\x9F\xA7", "(none)"},
    };
    for (const auto& [name, data] : names) {
        SCOPED_TRACE(name);
        EXPECT_EQ(dataOf(fork, fork.find('STR ', std::string_view(name))), data);
    }
}

TEST(ResourceFork, RefusesWhatIsNoMap) {
    using Bytes = std::vector<std::byte>;
    const auto patch = [](std::size_t offset, std::uint64_t value, std::size_t width) {
        return [=](Bytes& bytes) {
            ByteWriter writer;
            writer.bytes(bytes).patch(offset, value, width);
            bytes = writer.take();
        };
    };
    const std::size_t map = sample().mapStart();
    const std::tuple<const char*, std::function<void(Bytes&)>, OSStatus> rows[] = {
        {"no bytes are no fork", [](Bytes& b) { b.clear(); }, eofErr},
        {"zeros are no fork", [](Bytes& b) { b.assign(4096, std::byte{0}); }, eofErr},
        {"a few bytes are no map", [](Bytes& b) { b.resize(9); }, mapReadErr},
        {"text is no map", [](Bytes& b) { b.assign(4096, std::byte{'x'}); }, mapReadErr},
        {"a map behind the end", patch(4, 0xFFFFFFF0, 4), mapReadErr},
        {"a map cut off in its reference lists", [=](Bytes& b) { b.resize(map + 60); }, mapReadErr},
        {"a type list behind the end", patch(map + 24, 0xFFF0, 2), mapReadErr},
        {"more types than bytes", patch(map + 28, 0xFFFE, 2), mapReadErr},
        {"more references than bytes", patch(map + 34, 0xFFFE, 2), mapReadErr},
        {"a list behind the end", patch(map + 36, 0xFFF0, 2), mapReadErr},
        {"data behind the end", patch(0, 0x7FFFFFFF, 4), mapReadErr},
        {"a map length that is too short is mended", patch(12, 40, 4), noErr},
        {"a map length of nothing is mended", patch(12, 0, 4), noErr},
        {"a map length that is too long is cut", patch(12, 0xFFFFFFFF, 4), noErr},
    };
    for (const auto& [row, spoil, status] : rows) {
        SCOPED_TRACE(row);
        Bytes bytes = sample().build();
        spoil(bytes);
        const auto fork = open(std::move(bytes));
        ASSERT_EQ(fork.status(), status);
        if (fork) {
            EXPECT_EQ(fork->references().size(), 4u);
        }
    }
}

TEST(ResourceFork, OneSpoiltResourceSparesTheOthers) {
    auto bytes = sample().build();
    ByteWriter spoilt;
    spoilt.bytes(bytes);
    const std::size_t map = sample().mapStart();
    spoilt.patch(256, 0x80000000, 4);       // length of the first resource's data
    spoilt.patch(map + 78 - 2, 0x7000, 2);  // name of the second
    const auto fork = open(spoilt.take());
    ASSERT_TRUE(fork.ok());
    EXPECT_EQ(dataOf(*fork, fork->find('STR ', SInt16{128})), "(-199)");
    EXPECT_EQ(dataOf(*fork, fork->find('STR ', SInt16{130})), "later");
    EXPECT_EQ(dataOf(*fork, fork->find('TEXT', SInt16{-7})), "abc");
}

TEST(ResourceFork, SharedListsStayInProportion) {
    // 8000 types that all point at one list of 500 references.
    ByteWriter map;
    map.fill(24).u16(28).u16(28).u16(7999);
    for (std::uint32_t i = 0; i < 8000; ++i) map.u32(i + 1).u16(499).u16(30000);
    map.fill(100000);
    ByteWriter fork;
    fork.u32(16).u32(16).u32(0).u32(static_cast<std::uint32_t>(map.size())).bytes(map.view());
    EXPECT_EQ(open(fork.take()).status(), mapReadErr);
}

TEST(ResourceFork, EmptyMaps) {
    for (const std::size_t length : {28u, 30u}) {
        SCOPED_TRACE(length);
        ByteWriter fork;
        fork.u32(256).u32(256).u32(0).u32(static_cast<std::uint32_t>(length));
        fork.text("This resource fork intentionally left blank   ").align(256);
        fork.fill(24).u16(28).u16(30);
        if (length == 30) fork.u16(0xFFFF);
        const auto opened = open(fork.take());
        ASSERT_TRUE(opened.ok());
        EXPECT_TRUE(opened->types().empty());
    }
}

}  // namespace
}  // namespace osa
