// Resource forks written: to each place where they may lie, without harm to what lies beside them.
#include <sys/stat.h>

#include "platform/files/stores/ResourceForkWriter.h"
#include "tests/platform/files/FileFixture.h"

namespace osa::test {
namespace {

const std::string kOld = resourceFork("the old fork");
const std::string kInfo = finderInfo(FourCC("osas"), FourCC("ToyS"));

/// Entry 9 with the attribute "name" = "value", for a place `at` in a file.
std::string infoWithAttribute(std::uint32_t at) {
    const std::uint32_t value = at + 34 + 36 + 16;
    ByteWriter entry;
    entry.text(kInfo).fill(2).text("ATTR").u32(7).u32(value + 5).u32(value).u32(5).fill(12);
    entry.u16(0).u16(1).u32(value).u32(5).u16(0).u8(5).text({"name\0", 5}).text("value");
    return entry.takeText();
}

class ResourceForkWriter : public FileFixture {
  protected:
    static OSStatus write(const FSRef& file, const std::string& fork) {
        return writeResourceFork(file, std::make_shared<MemorySource>(asBytes(fork))).status();
    }
    static std::string read(const FSRef& file) {
        const std::string text = fork(file, ForkKind::resource);
        return text == "status -1409" ? "" : text;
    }
};

TEST_F(ResourceForkWriter, ChangesNothingButTheForkWhereItLies) {
    const auto build = [](std::vector<std::pair<std::uint32_t, std::string>> entries,
                          std::uint32_t excess = 0) {
        return AppleDoubleBuilder{.entries = std::move(entries), .excess = excess}.build();
    };
    const std::string rich = build({{8, "dates"}, {9, kInfo}, {2, kOld}, {77, "?"}});
    const std::string noRow = build({{9, infoWithAttribute(38)}});
    const std::pair<const char*, std::string> places[] = {
        {"d/x@user.com.apple.ResourceFork", kOld},
        {"d/x@user.org.netatalk.ResourceFork", kOld},
        {"d/x@user.DosStream.AFP_Resource:$DATA", kOld + '\0'},
        {"d/._x", rich},
        {"d/.AppleDouble/x", rich},
        {"__MACOSX/d/._x", rich},
        {"d/.rsrc/x", kOld},
        {"d/.resource/x", kOld},
        {"d/%x", rich},
        {"d/._x", rich + std::string(200000, '.')},
        {"d/._x", build({{9, infoWithAttribute(50)}, {2, kOld}})},
        {"d/._x", build({{2, kOld + "    "}, {9, infoWithAttribute(66)}})},
        {"d/._x", noRow},
        {"d/._x", build({{2, kOld}, {9, kInfo}}, 7)},
        {"d/._x", build({{9, kInfo}, {2, ""}, {77, "?"}})},
    };
    for (const auto& [place, old] : places) {
        const std::string holder = place;
        const bool isFile = holder.find('@') == std::string::npos;
        for (const char* data : {"the new fork", "a longer fork than the old one", "short", ""}) {
            const std::string fork = *data == 0 ? "" : resourceFork(data);
            SCOPED_TRACE(holder + ": " + fork);
            for (const char* root : {"d", "__MACOSX"}) fs::remove_all(at(root));
            put("d/x", "data");
            chmod(put(holder, old).c_str(), 0640);
            if (isFile) put(holder + "@user.note", "kept");
            const auto before = besidesFork(content(holder));
            const auto there = names();
            ASSERT_EQ(write(ref("d/x"), fork), noErr);
            EXPECT_EQ(read(ref("d/x")), fork);
            EXPECT_EQ(names(), there);
            if (!isFile) continue;
            EXPECT_EQ(posix::status(at(holder), posix::Follow::no)->mode & 0777, 0640u);
            EXPECT_EQ(content(holder + "@user.note"), "kept");
            auto after = besidesFork(content(holder));
            // A table that grew: the attributes moved, and what says where they are.
            if (old == noRow && !fork.empty()) after[0] = before[0];
            EXPECT_EQ(after, before);
            if (old != rich || fork.size() != kOld.size()) continue;
            EXPECT_EQ(content(holder),
                      std::string(rich).replace(rich.find(kOld), fork.size(), fork));
        }
    }
}

TEST_F(ResourceForkWriter, TakesAnotherPlaceOnlyWhenItMust) {
    put("x", "data");
    EXPECT_EQ(write(ref("x"), ""), noErr);
    EXPECT_EQ(names(), std::set<std::string>{"x"}) << "nothing to be kept";
    EXPECT_EQ(write(ref("x"), "new"), noErr);
    EXPECT_EQ(content("._x").substr(0, 50) + "new",
              std::string("\0\5\x16\7\0\2\0\0Mac OS X        \0\2\0\0\0\x9\0\0\0\x32\0\0\0\x20"
                          "\0\0\0\2\0\0\0\x52\0\0\0\3new",
                          53));
    // Too long for an attribute: the other attributes and the side file's information stay.
    put("y");
    put("._y", appleDouble(kInfo, "hidden"));
    put("y@user.com.apple.ResourceFork", "seen");
    put("y@user.DosStream.AFP_Resource", "seen");
    const std::string large(3 << 20, 'x');
    EXPECT_EQ(write(ref("y"), large), noErr);
    EXPECT_EQ(read(ref("y")), large);
    EXPECT_EQ(content("y@user.com.apple.ResourceFork"), "none");
    EXPECT_EQ(content("y@user.DosStream.AFP_Resource"), "none");
    EXPECT_EQ(+info(ref("y"), kFSCatInfoFinderInfo).finderInfo.fdType, FourCC("osas"));
    // Emptied: nor does another one come to light.
    put("%y", appleDouble(kInfo, "deeper"));
    EXPECT_EQ(write(ref("y"), ""), noErr);
    EXPECT_EQ(read(ref("y")), "");
    // What is not ours.
    put("z");
    put("._z", "not ours");
    EXPECT_EQ(write(ref("z"), "new"), dupFNErr);
    EXPECT_EQ(content("._z"), "not ours");
    EXPECT_EQ(write(ref(""), "new"), notAFileErr);
}

TEST_F(ResourceForkWriter, LeavesTheOldOrTheNewWhereverItFails) {
    FSRef x{};
    const std::string large(70000, 'x');
    struct Row {
        const char* holder;
        std::string old, fork;
    };
    const Row rows[] = {{"._x", appleDouble(kInfo, kOld), "new"},
                        {"%x", appleDouble(kInfo, kOld), ""},
                        {".AppleDouble/x", appleDouble(kInfo, kOld), "new"},
                        {"__MACOSX/._x", appleDouble(kInfo, kOld), "new"},
                        {".rsrc/x", kOld, "new"},
                        {".rsrc/x", kOld, resourceFork("new")},
                        {".resource/x", kOld, ""},
                        {"x@user.com.apple.ResourceFork", kOld, "new"},
                        {"x@user.com.apple.ResourceFork", kOld, ""},
                        {"x@user.com.apple.ResourceFork", kOld, large},
                        {"", "", "new"}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.holder + row.fork.substr(0, 5));
        const std::string holder = row.holder;
        std::set<std::string> there;
        failEachCall(
            [&] {
                for (const auto& name : names()) fs::remove_all(at(name));
                put("x", "data");
                if (!holder.empty()) put(holder, row.old);
                if (row.fork.empty()) put("%x", appleDouble(kInfo, kOld));
                x = ref("x");
                there = names();
            },
            [&] { return write(x, row.fork); },
            [&](OSStatus status) {
                EXPECT_EQ(read(x), status == noErr ? row.fork : holder.empty() ? "" : kOld);
                const bool isLeft = content("%x").find(kOld) != std::string::npos;
                EXPECT_TRUE(!row.fork.empty() || isLeft == (status != noErr));
                const bool isMoved = row.fork == large || holder.empty() ||
                                     (holder == ".rsrc/x" && row.fork == "new");
                if (status == noErr && isMoved) there.insert("._x");
                EXPECT_EQ(names(), there);
            });
    }
}

}  // namespace
}  // namespace osa::test
