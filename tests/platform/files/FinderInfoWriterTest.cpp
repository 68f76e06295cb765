// Finder information written: to each place where it may lie, without harm to what lies beside it.
#include <sys/stat.h>
#include <unistd.h>

#include "platform/files/formats/AppleDouble.h"
#include "tests/platform/files/FileFixture.h"

namespace osa::test {
namespace {

constexpr FSCatalogInfoBitmap kHalves[] = {kFSCatInfoFinderInfo, kFSCatInfoFinderXInfo};
constexpr FSCatalogInfoBitmap kBoth = kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo;
const std::string kOld = "The old Finder information, full";
const std::string kBlank(32, '\0');
/// A file's and a folder's, in fields and in bytes.
const FSCatalogInfo kNew = [] {
    FSCatalogInfo info{};
    info.finderInfo = {FourCC("TEXT"), FourCC("ttxt"), kIsInvisible, {1, -2}, 3};
    info.extFinderInfo = {5, {}, 1, -128, 7, 8};
    return info;
}();
const FSCatalogInfo kNewFolder = [] {
    FSCatalogInfo info{};
    const DInfo basic{{0x5445, 0x5854, 0x7474, 0x7874}, kIsInvisible, {1, -2}, 3};
    const DXInfo extended{{5, 0}, 0, 1, -128, 7, 8};
    std::memcpy(&info.finderInfo, &basic, sizeof basic);
    std::memcpy(&info.extFinderInfo, &extended, sizeof extended);
    return info;
}();
const std::string kNewBytes("TEXTttxt\x40\0\0\1\xFF\xFE\0\3\0\5\0\0\0\0\0\0\1\x80\0\7\0\0\0\x8",
                            32);

class FinderInfoWriter : public FileFixture {
  protected:
    static OSStatus set(const FSRef& object, FSCatalogInfoBitmap which,
                        const FSCatalogInfo& info = kNew) {
        return FSSetCatalogInfo(&object, which, &info);
    }
};

TEST_F(FinderInfoWriter, ChangesNothingButTheGivenHalfWhereItLies) {
    const std::string rich =
        AppleDoubleBuilder{.entries = {{2, "fork"}, {77, "?"}, {9, kOld + "..ATTR and so on"}}}
            .build();
    const std::string afp = ByteWriter().u32(0x41465000).u32(256).fill(8).takeText() + kOld + "end";
    const std::pair<const char*, std::string> places[] = {
        {"d/x@user.com.apple.FinderInfo", kOld},
        {"d/sub@user.com.apple.FinderInfo", kOld + "more"},
        {"d/x@user.org.netatalk.Metadata", rich},
        {"d/x@user.DosStream.AFP_AfpInfo:$DATA", afp},
        {"d/sub@user.DosStream.AFP_AfpInfo", afp},
        {"d/._x", rich},
        {"d/._sub", rich + std::string(200000, '.')},
        {"d/.AppleDouble/x", rich},
        {"d/sub/.AppleDouble/.Parent", rich},
        {"__MACOSX/d/._x", rich},
        {"d/__MACOSX/._sub", rich},
        {"d/.finf/x", kOld},
        {"d/.finderinfo/sub", kOld + "more"},
        {"d/%x", rich},
    };
    for (const auto& [place, old] : places) {
        SCOPED_TRACE(place);
        const std::string holder = place;
        const std::string file = at(holder.substr(0, holder.find('@')));
        const bool isFolder = holder.find("sub") != std::string::npos;
        fs::create_directories(at("d/sub"));
        put("d/x", "data");
        ASSERT_EQ(chmod(put(holder, old).c_str(), 0740), 0);
        const auto there = names();
        const FSRef object = ref(isFolder ? "d/sub" : "d/x");
        const FSCatalogInfo& wanted = isFolder ? kNewFolder : kNew;
        std::string expected = old;
        for (const std::size_t half : {0, 1}) {
            expected.replace(old.find(kOld) + half * 16, 16, kNewBytes, half * 16, 16);
            info(object, kBoth);
            ASSERT_EQ(set(object, kHalves[half], wanted), noErr);
            EXPECT_EQ(content(holder), expected);
        }
        EXPECT_EQ(names(), there);
        const FSCatalogInfo now = info(object, kBoth);
        EXPECT_EQ(std::memcmp(&now.finderInfo, &wanted.finderInfo, 32), 0);
        const auto before = posix::status(file, posix::Follow::no);
        EXPECT_EQ(set(object, kBoth, wanted), noErr);
        const auto after = posix::status(file, posix::Follow::no);
        EXPECT_TRUE(after->isUnchangedSince(*before)) << "written although it was so already";
        EXPECT_EQ(after->mode & 0777, 0740u);
        for (const char* root : {"d", "__MACOSX"}) fs::remove_all(at(root));
    }
    put("x");
    for (const char* name : {"._x", "%x"}) put(name, appleDouble(kOld, "fork"));
    EXPECT_EQ(set(ref("x"), kBoth, FSCatalogInfo{}), noErr);
    EXPECT_EQ(+info(ref("x"), kBoth).finderInfo.fdType, 0u) << "nor another place's";
}

TEST_F(FinderInfoWriter, MakesRoomWhereThereIsNone) {
    const std::string none = AppleDoubleBuilder{.entries = {{2, "fork"}, {77, "?"}}}.build();
    const std::tuple<const char*, std::string, std::string, std::string> rows[] = {
        {"no side file", "none", "", ""},
        {"an empty one", "", "", ""},
        {"blank information", appleDouble(kBlank, "fork"), "fork", ""},
        {"no information", none, "fork", "?"},
        {"half of it, and promises beyond the end",
         AppleDoubleBuilder{.entries = {{77, "?"}, {9, "half"}, {2, "fork"}}, .excess = 7}.build(),
         "fork", "?halffor"},
        {"a table cut short", none.substr(0, 40), "", ""},
        {"an entry far past the end", std::string(none).replace(30, 1, "\xFF"), "", "?"},
    };
    put("x");
    for (const auto& [name, before, fork, other] : rows) {
        SCOPED_TRACE(name);
        fs::remove(at("._x"));
        if (before != "none") put("._x", before);
        EXPECT_EQ(set(ref("x"), kBoth), noErr);
        const auto file = AppleDouble::parse(*posix::openSource(at("._x")));
        ASSERT_TRUE(file.ok());
        EXPECT_EQ(textOf(*file->content(9)), kNewBytes);
        EXPECT_EQ(textOf(*file->content(2)), fork);
        EXPECT_EQ(textOf(*file->content(77)), other);
        if (!before.starts_with('\0')) {
            EXPECT_EQ(content("._x").substr(8, 30),
                      std::string("Mac OS X        \0\1\0\0\0\x9\0\0\0\x26\0\0\0\x20", 30));
        }
    }
}

TEST_F(FinderInfoWriter, LeavesTheOldOrTheNewWhereverItFails) {
    put("x");
    FSRef x{};
    for (const std::string& before : {std::string("none"), appleDouble(kOld, "fork")}) {
        failEachCall(
            [&] {
                fs::remove(at("._x"));
                if (before != "none") put("._x", before);
                x = ref("x");
            },
            [&] { return set(x, kBoth); },
            [&](OSStatus status) {
                EXPECT_TRUE(content("._x") == before || status == noErr);
                EXPECT_EQ(+info(x, kBoth).finderInfo.fdType == FourCC("TEXT"), status == noErr);
                EXPECT_LE(names().size(), 2u);
            });
    }
    // Blanked in several places: all or none.
    const std::string kept = appleDouble(kOld, "fork");
    failEachCall(
        [&] {
            for (const char* name : {"._x", "%x", ".finf/x"}) put(name, kept);
            x = ref("x");
        },
        [&] { return set(x, kBoth, FSCatalogInfo{}); },
        [&](OSStatus status) {
            for (const char* name : {"._x", "%x", ".finf/x"}) {
                EXPECT_EQ(content(name) == kept, status != noErr);
            }
            EXPECT_EQ(names(), (std::set<std::string>{"x", "._x", "%x", ".finf", ".finf/x"}));
        });
}

TEST_F(FinderInfoWriter, SaysWhyItDoesNot) {
    for (const char* name : {"x", "gone", "y", "z"}) put(name);
    fs::create_symlink("nowhere", at("._z"));
    put("._y", "not ours");
    fs::create_symlink("x", at("link"));
    const FSRef gone = ref("gone"), x = ref("x"), link = unfollowed("link");
    fs::remove(at("gone"));
    EXPECT_EQ(set(FSRef{}, kBoth), errFSBadFSRef);
    EXPECT_EQ(set(gone, kBoth), fnfErr);
    EXPECT_EQ(set(link, kBoth), unimpErr);
    EXPECT_EQ(set(x, kBoth | kFSCatInfoNodeFlags), unimpErr);
    EXPECT_EQ(set(ref("y"), kBoth), dupFNErr);
    EXPECT_EQ(content("._y"), "not ours");
    EXPECT_EQ(set(ref("z"), kBoth), dupFNErr);
    put("nowhere", appleDouble(kOld, "fork"));
    EXPECT_EQ(+info(ref("z"), kBoth).finderInfo.fdType, FourCC("The ")) << "the link leads on now";
    const bool isSuper = geteuid() == 0;
    chmod(root_.c_str(), 0555);
    ASSERT_EQ(isSuper ? seteuid(65534) : 0, 0);
    EXPECT_EQ(set(x, kBoth), afpAccessDenied);
    ASSERT_EQ(isSuper ? seteuid(0) : 0, 0);
    chmod(root_.c_str(), 0755);
}

}  // namespace
}  // namespace osa::test
