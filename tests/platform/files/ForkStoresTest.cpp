// Every place where forks and Finder information may lie, their order, and what asking costs.
#include <optional>

#include "platform/files/stores/ForkStore.h"
#include "tests/platform/files/FileFixture.h"

namespace osa::test {
namespace {

constexpr FourCharCode kType = FourCC("osas");
const std::string kInfo = finderInfo(kType, FourCC("ToyS"));
const std::string kFork = resourceFork("the resource fork");

class ForkStores : public FileFixture {};

/// Of a big-endian writer.
const std::string kAfpInfo =
    ByteWriter().u32(0x41465000).u32(0x10000).fill(8).text(kInfo).fill(13).takeText();

TEST_F(ForkStores, FindPartsInEveryPlace) {
    const std::string both = appleDouble(kInfo, kFork);
    using Parts = std::map<std::string, std::string>;
    using Row = std::tuple<const char*, Parts, Parts>;  // files, attributes
    const Row rows[] = {
        // The tests of the writers go through the places one by one.
        {"an unpacked archive, beside", {{"d/__MACOSX/._x", both}}, {}},
        {"a side file for the fork, a folder for the rest",
         {{"d/._x", appleDouble(std::string(32, '\0'), kFork)}, {"d/.finf/x", kInfo}},
         {}},
        {"a server's header attribute, the fork in a side file",
         {{"d/._x", AppleDoubleBuilder{.entries = {{2, kFork}}}.build()}},
         {{"user.org.netatalk.Metadata", appleDouble(kInfo, "")}}},
        {"streams under short names",
         {},
         {{"user.DosStream.AFP_AfpInfo", kAfpInfo}, {"user.DosStream.AFP_Resource", kFork + '\0'}}},
        {"an attribute before a side file that says otherwise",
         {{"d/._x", appleDouble(finderInfo(1, 2), "other")}, {"d/.rsrc/x", "other"}},
         {{"user.com.apple.FinderInfo", kInfo}, {"user.com.apple.ResourceFork", kFork}}},
        {"a large side file",
         {{"d/._x",
           AppleDoubleBuilder{.entries = {{1, std::string(70000, 'd')}, {9, kInfo}, {2, kFork}}}
               .build()}},
         {}},
    };
    for (const auto& [wantedName, files, attributes] : rows) {
        SCOPED_TRACE(wantedName);
        put("d/x", "data");
        for (const auto& [name, content] : files) put(name, content);
        for (const auto& [name, value] : attributes) put("d/x@" + name, value);
        const FSRef x = ref("d/x");
        const FSCatalogInfo found = info(x, kFSCatInfoFinderInfo | kFSCatInfoRsrcSizes);
        EXPECT_EQ(+found.finderInfo.fdType, kType);
        EXPECT_EQ(+found.rsrcLogicalSize, kFork.size());
        EXPECT_EQ(fork(x, ForkKind::resource), kFork);
        EXPECT_EQ(fork(x, ForkKind::data), "data");
        fs::remove_all(at("d"));
        fs::remove_all(at("__MACOSX"));
    }
}

TEST_F(ForkStores, AreNoMoreThanTheyHold) {
    const std::string none = "status -1409";
    const std::tuple<const char*, std::string, FourCharCode, std::string> rows[] = {
        {"an empty side file", "", 0, none},
        {"a data file with such a name", std::string(200, 'x'), 0, none},
        {"a side file of the wrong version",
         AppleDoubleBuilder{.entries = {{2, kFork}}, .version = 0x00030000}.build(), 0, none},
        {"version 1", AppleDoubleBuilder{.entries = {{9, kInfo}}, .version = 0x00010000}.build(),
         kType, none},
        {"an empty fork", appleDouble(kInfo, ""), kType, ""},
        {"entries that promise too much",
         AppleDoubleBuilder{.entries = {{9, kInfo}, {2, kFork}}, .excess = 1u << 31}.build(), kType,
         kFork},
        {"half of the Finder information",
         AppleDoubleBuilder{.entries = {{2, kFork}, {9, kInfo.substr(0, 9)}}}.build(), kType,
         kFork},
    };
    put("x");
    for (const auto& [name, sideFile, type, wantedFork] : rows) {
        SCOPED_TRACE(name);
        put("._x", sideFile);
        EXPECT_EQ(+info(ref("x"), kFSCatInfoFinderInfo).finderInfo.fdType, type);
        EXPECT_EQ(fork(ref("x"), ForkKind::resource), wantedFork);
    }
}

TEST_F(ForkStores, DescribeFoldersAndLinksToo) {
    const std::string window =
        ByteWriter().u16(1).u16(2).u16(3).u16(4).u16(kIsInvisible).fill(22).takeText();
    put("d/in");
    put("._d", appleDouble(window, ""));
    fs::create_symlink("d", at("link"));
    const FSCatalogInfo folder = info(ref("d"), kFSCatInfoFinderInfo);
    DInfo view;
    std::memcpy(&view, &folder.finderInfo, sizeof view);
    EXPECT_EQ(view.frRect.right, 4);
    EXPECT_EQ(view.frFlags, kIsInvisible);
    const FSRef link = unfollowed("link");
    EXPECT_EQ(+info(link, kFSCatInfoFinderInfo).finderInfo.fdType, FourCC("slnk"));
    EXPECT_EQ(fork(link, ForkKind::data), "d");
}

TEST_F(ForkStores, SeeEveryChangeBetweenTwoQuestions) {
    put("x", "data");
    const FSRef x = ref("x");
    const auto type = [&] { return info(x, kFSCatInfoFinderInfo).finderInfo.fdType; };
    for (const bool settled : {false, true}) {
        SCOPED_TRACE(settled ? "after the clock moved on" : "at once");
        const auto change = [&](const std::function<void()>& make) {
            if (settled) std::this_thread::sleep_for(std::chrono::milliseconds(30));
            (void)type();
            make();
        };
        EXPECT_EQ(type(), 0u);
        change([&] { put(".finf/x", finderInfo(1, 0)); });
        EXPECT_EQ(type(), 1u) << "a new folder store";
        change([&] { put("._x", appleDouble(finderInfo(2, 0), "")); });
        EXPECT_EQ(type(), 2u) << "a new side file";
        change([&] { put("._x", appleDouble(finderInfo(3, 0), "")); });
        EXPECT_EQ(type(), 3u) << "other content of the same size";
        change([&] { fs::remove(at("._x")); });
        EXPECT_EQ(type(), 1u) << "the side file went";
        change([&] { fs::remove_all(at(".finf")); });
        EXPECT_EQ(type(), 0u);
        put("x@user.com.apple.FinderInfo", finderInfo(4, 0));
        EXPECT_EQ(type(), 4u) << "a new attribute";
        put("x@user.com.apple.FinderInfo", std::string(32, '\0'));
    }
}

/// The system calls that `work` makes, found by letting the last one fail; `prepare` comes before
/// each try.
UInt32 operationsOf(
    const std::function<void()>& work, const std::function<void()>& prepare = [] {}) {
    for (UInt32 count = 0;; ++count) {
        prepare();
        if (failing(count + 1, false, work) == 0) return count;
    }
}

TEST_F(ForkStores, AskTheSystemSeldom) {
    put("with", "data");
    put("._with", appleDouble(kInfo, kFork));
    put("without", "data");
    // Dates of the last few milliseconds are not trusted.
    std::this_thread::sleep_for(std::chrono::milliseconds(40));
    const FSRef with = ref("with"), without = ref("without");
    FSCatalogInfo found{};
    const auto ask = [&](const FSRef& object, FSCatalogInfoBitmap which) {
        return [&found, &object, which] {
            FSGetCatalogInfo(&object, which, &found, nullptr, nullptr, nullptr);
        };
    };
    // Closing is not counted: it cannot be refused.
    // A file of its own for each try: the memory holds one object only.
    const auto fresh = [&](const FSRef& object, const FSRef& other) {
        return operationsOf(ask(object, kFSCatInfoFinderInfo),
                            [&] { info(other, kFSCatInfoFinderInfo); });
    };
    EXPECT_LE(fresh(with, without), 5u);
    EXPECT_LE(operationsOf(ask(with, kFSCatInfoFinderInfo)), 2u);
    EXPECT_LE(operationsOf(ask(with, kFSCatInfoRsrcSizes)), 2u);
    EXPECT_LE(fresh(without, with), 4u) << "no store is probed in a known folder";
    EXPECT_LE(operationsOf(ask(without, kFSCatInfoFinderInfo)), 2u);
    EXPECT_LE(operationsOf([&] { (void)openForkForReading(with, ForkKind::data); }), 2u);
    info(with, kFSCatInfoFinderInfo);
    EXPECT_LE(operationsOf([&] { (void)openForkForReading(with, ForkKind::resource); }), 2u);
}

}  // namespace
}  // namespace osa::test
