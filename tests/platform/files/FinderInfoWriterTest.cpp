// Finder information written: to each place where it may lie, without harm to what lies beside it.
#include <OSA/Diagnostics.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <numeric>
#include <set>

#include "platform/files/formats/AppleDouble.h"
#include "tests/platform/files/FileFixture.h"

namespace osa::test {
namespace {

constexpr FSCatalogInfoBitmap kBasic = kFSCatInfoFinderInfo;
constexpr FSCatalogInfoBitmap kExtended = kFSCatInfoFinderXInfo;

const std::string kOld = [] {
    std::string bytes(32, '\0');
    std::iota(bytes.begin(), bytes.end(), '!');
    return bytes;
}();
const std::string kNewBasic =
    ByteWriter().text("TEXTttxt").u16(kIsInvisible).u16(1).u16(2).u16(3).takeText();
const std::string kNewExtended = ByteWriter().u16(5).fill(6).u16(0x0180).u16(7).u32(8).takeText();

/// What kNewBasic and kNewExtended say, by the fields of a file or a folder.
FSCatalogInfo wanted(bool isFolder) {
    FSCatalogInfo info{};
    info.finderInfo = {FourCC("TEXT"), FourCC("ttxt"), kIsInvisible, {1, 2}, 3};
    info.extFinderInfo = {5, {}, 1, -128, 7, 8};
    const DInfo basic{{0x5445, 0x5854, 0x7474, 0x7874}, kIsInvisible, {1, 2}, 3};
    const DXInfo extended{{5, 0}, 0, 1, -128, 7, 8};
    if (isFolder) {
        std::memcpy(&info.finderInfo, &basic, sizeof basic);
        std::memcpy(&info.extFinderInfo, &extended, sizeof extended);
    }
    return info;
}

std::string halfOf(const FSCatalogInfo& info, bool isBasic) {
    const auto bytes = reinterpret_cast<const char*>(&info);
    return {bytes + (isBasic ? offsetof(FSCatalogInfo, finderInfo)
                             : offsetof(FSCatalogInfo, extFinderInfo)),
            16};
}

class FinderInfoWriter : public FileFixture {
  protected:
    static OSStatus set(const FSRef& object, FSCatalogInfoBitmap which, const FSCatalogInfo& info) {
        return FSSetCatalogInfo(&object, which, &info);
    }

    std::string content(const std::string& name) const {
        const auto bytes = posix::readFile(at(name), 1 << 20);
        return bytes.ok() ? std::string(asText(*bytes)) : "none";
    }

    std::string attribute(const std::string& name, const std::string& attribute) const {
        const auto bytes = posix::attribute(at(name), attribute);
        return bytes.ok() ? std::string(asText(*bytes)) : "none";
    }

    std::set<std::string> names() const {
        std::set<std::string> found;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root_)) {
            found.insert(entry.path().string().substr(root_.size() + 1));
        }
        return found;
    }
};

TEST_F(FinderInfoWriter, ChangesNothingButTheGivenHalfWhereItLies) {
    // A block of attributes behind the Finder information, whose entries count from the file's
    // start; another entry; a fork.
    const std::string block = ByteWriter().fill(2).text("ATTR").fill(30).u16(1).takeText() +
                              ByteWriter().u32(160).u32(2).fill(2).pascalString("a\0").takeText();
    const std::string rich =
        AppleDoubleBuilder{.entries = {{2, "fork"}, {77, "what?"}, {9, kOld + block}}}.build();
    const std::string afp = ByteWriter().u32(0x41465000).u32(256).fill(8).takeText() + kOld + "end";
    struct Row {
        const char* file;       // that keeps a file's information, or
        const char* attribute;  // that does
        const char* folder;     // the same for a folder
        std::string content;
    };
    const Row rows[] = {
        {nullptr, "user.com.apple.FinderInfo", nullptr, kOld},
        {nullptr, "user.org.netatalk.Metadata", nullptr, rich},
        {nullptr, "user.DosStream.AFP_AfpInfo:$DATA", nullptr, afp},
        {"d/._x", nullptr, "d/._sub", rich},
        {"d/._x", nullptr, "d/._sub", rich + std::string(200000, '.')},
        {"d/.AppleDouble/x", nullptr, "d/sub/.AppleDouble/.Parent", rich},
        {"__MACOSX/d/._x", nullptr, "__MACOSX/d/._sub", rich},
        {"d/.finf/x", nullptr, "d/.finf/sub", kOld},
        {"d/.finderinfo/x", nullptr, "d/.finderinfo/sub", kOld + "more"},
        {"d/%x", nullptr, "d/%sub", rich},
    };
    for (const bool isFolder : {false, true}) {
        const std::string name = isFolder ? "d/sub" : "d/x";
        for (const Row& row : rows) {
            const std::string holder = row.attribute != nullptr ? ""
                                       : isFolder               ? row.folder
                                                                : row.file;
            SCOPED_TRACE(name + " in " + (row.attribute != nullptr ? row.attribute : holder));
            std::filesystem::create_directories(at("d/sub"));
            put("d/x", "data");
            if (row.attribute == nullptr) {
                chmod(put(holder, row.content).c_str(), 0640);
            } else if (!posix::setAttribute(at(name), row.attribute, asBytes(row.content)).ok()) {
                continue;
            }
            const auto there = names();
            const FSRef object = ref(name);
            const auto kept = [&] {
                return row.attribute ? attribute(name, row.attribute) : content(holder);
            };
            std::string expected = row.content;
            for (const bool isBasic : {true, false}) {
                const FSCatalogInfoBitmap half = isBasic ? kBasic : kExtended;
                expected.replace(row.content.find(kOld) + (isBasic ? 0 : 16), 16,
                                 isBasic ? kNewBasic : kNewExtended);
                info(object, half);
                ASSERT_EQ(set(object, half, wanted(isFolder)), noErr);
                EXPECT_EQ(kept(), expected);
                EXPECT_EQ(halfOf(info(object, half), isBasic), halfOf(wanted(isFolder), isBasic));
            }
            EXPECT_EQ(names(), there);
            const auto before = posix::status(at(holder.empty() ? name : holder), {});
            EXPECT_EQ(set(object, kBasic | kExtended, wanted(isFolder)), noErr);
            const auto after = posix::status(at(holder.empty() ? name : holder), {});
            EXPECT_TRUE(after->isUnchangedSince(*before)) << "written although it was so already";
            EXPECT_EQ(after->mode & 0777, holder.empty() ? before->mode & 0777 : 0640u);
            for (const char* root : {"d", "__MACOSX"}) std::filesystem::remove_all(at(root));
        }
    }
}

TEST_F(FinderInfoWriter, MakesRoomWhereThereIsNone) {
    const std::string none = AppleDoubleBuilder{.entries = {{2, "fork"}, {77, "?"}}}.build();
    struct Row {
        const char* name;
        std::string before;  // "none": no file
        OSStatus status;
        std::string fork, other;
    };
    const Row rows[] = {
        {"no side file", "none", noErr, "", ""},
        {"an empty one", "", noErr, "", ""},
        {"blank information", appleDouble(std::string(32, '\0'), "fork"), noErr, "fork", ""},
        {"no information", none, noErr, "fork", "?"},
        {"half of it, and promises beyond the end",
         AppleDoubleBuilder{.entries = {{77, "?"}, {9, "half"}, {2, "fork"}}, .excess = 9}.build(),
         noErr, "fork", "?half"},
        {"a table cut short", none.substr(0, 40), noErr, "", ""},
        {"no room for a fork that moves", std::string(none).replace(30, 4, "\xFF\xFF\xFF\xFE"),
         noErr, "", "?"},
        {"a data file of that name", std::string(99, 'x'), dupFNErr, "", ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        put("x");
        if (row.before != "none") put("._x", row.before);
        EXPECT_EQ(set(ref("x"), kBasic | kExtended, wanted(false)), row.status);
        EXPECT_EQ(names(), (std::set<std::string>{"x", "._x"}));
        if (row.status != noErr) {
            EXPECT_EQ(content("._x"), row.before);
            continue;
        }
        const auto made = posix::openSource(at("._x"));
        const auto file = AppleDouble::parse(*made);
        ASSERT_TRUE(file.ok());
        EXPECT_EQ(textOf(*file->content(9)), kNewBasic + kNewExtended);
        EXPECT_EQ(textOf(*file->content(2)), row.fork);
        EXPECT_EQ(textOf(*file->content(77)).substr(0, row.other.size()), row.other);
        if (row.before == "none") {
            EXPECT_EQ(content("._x"), std::string("\0\5\x16\7\0\2\0\0Mac OS X        \0\1", 26) +
                                          std::string("\0\0\0\x9\0\0\0\x26\0\0\0\x20", 12) +
                                          kNewBasic + kNewExtended);
        }
        std::filesystem::remove(at("._x"));
    }
}

TEST_F(FinderInfoWriter, ShowsNothingOfOtherPlacesOnceItIsCleared) {
    put("x");
    for (const char* place : {"._x", "%x"}) put(place, appleDouble(kOld, "fork"));
    put(".finf/x", kOld);
    ASSERT_EQ(set(ref("x"), kBasic | kExtended, FSCatalogInfo{}), noErr);
    EXPECT_EQ(info(ref("x"), kBasic | kExtended).extFinderInfo.fdPutAway, 0);
    EXPECT_EQ(content("%x"), appleDouble(std::string(32, '\0'), "fork"));
}

TEST_F(FinderInfoWriter, LeavesTheOldOrTheNewWhereverItFails) {
    const std::string old = AppleDoubleBuilder{.entries = {{2, "fork"}}}.build();
    for (const std::string& before : {std::string("none"), old, appleDouble(kOld, "fork")}) {
        for (const bool fromThenOn : {false, true}) {
            SCOPED_TRACE(std::to_string(before.size()) + (fromThenOn ? " on and on" : " once"));
            put("x");
            UInt32 failed = 1;
            for (UInt32 nth = 1; failed > 0; ++nth) {
                ASSERT_LT(nth, 1000u);
                std::filesystem::remove(at("._x"));
                if (before != "none") put("._x", before);
                const FSRef x = ref("x");
                OSAFailOperation(nth, fromThenOn);
                const OSStatus status = set(x, kBasic, wanted(false));
                failed = OSAFailedOperations();
                OSAFailOperation(0, false);
                if (status != noErr) {
                    EXPECT_EQ(content("._x"), before) << nth;
                } else {
                    EXPECT_EQ(info(x, kBasic).finderInfo.fdType, FourCC("TEXT")) << nth;
                }
                auto left = names();
                left.erase("._x");
                EXPECT_EQ(left, std::set<std::string>{"x"}) << nth;
            }
        }
    }
}

TEST_F(FinderInfoWriter, SaysWhyItDoesNot) {
    put("x");
    put("gone");
    std::filesystem::create_symlink("x", at("link"));
    const FSRef gone = ref("gone"), x = ref("x"), folder = ref("");
    std::filesystem::remove(at("gone"));
    const UniChar name[] = {'l', 'i', 'n', 'k'};
    FSRef link;
    ASSERT_EQ(FSMakeFSRefUnicode(&folder, 4, name, 0, &link), noErr);
    const FSCatalogInfo info = wanted(false);
    EXPECT_EQ(set(FSRef{}, kBasic, info), errFSBadFSRef);
    EXPECT_EQ(set(gone, kBasic, info), fnfErr);
    EXPECT_EQ(set(link, kBasic, info), unimpErr);
    EXPECT_EQ(set(x, kBasic | kFSCatInfoCreateDate, info), unimpErr);
    EXPECT_EQ(names(), (std::set<std::string>{"x", "link"}));
    // The superuser is refused nothing.
    const bool isSuper = geteuid() == 0;
    ASSERT_EQ(chmod(root_.c_str(), 0555), 0);
    ASSERT_EQ(isSuper ? seteuid(65534) : 0, 0);
    EXPECT_EQ(set(x, kBasic, info), afpAccessDenied);
    ASSERT_EQ(isSuper ? seteuid(0) : 0, 0);
    chmod(root_.c_str(), 0755);
}

}  // namespace
}  // namespace osa::test
