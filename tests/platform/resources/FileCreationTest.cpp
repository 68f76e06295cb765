// Making files and resource files.
#include <CoreServices/Resources.h>

#include "tests/platform/files/FileFixture.h"

namespace osa::test {
namespace {

class FileCreation : public FileFixture {
  protected:
    FileCreation() {
        info_.finderInfo.fdType = 'TEXT';
        info_.permissions.mode = 0640;
    }
    OSErr create(const std::u16string& name, FSRef* made, FSCatalogInfoBitmap which = 0) const {
        return FSCreateFileUnicode(&folder_, name.size(), units(name), which, &info_, made,
                                   nullptr);
    }
    OSErr createResFile(const std::u16string& name, FSRef* made) const {
        FSCreateResFile(&folder_, name.size(), units(name), kTypeAndMode, &info_, made, nullptr);
        return ResError();
    }
    static const UniChar* units(const std::u16string& name) {
        return reinterpret_cast<const UniChar*>(name.data());
    }
    static void expectOpensEmpty(const FSRef& file) {
        const ResFileRefNum number = FSOpenResFile(&file, fsRdPerm);
        EXPECT_TRUE(number > 0 && Count1Types() == 0);
        CloseResFile(number);
    }
    static constexpr FSCatalogInfoBitmap kTypeAndMode =
        kFSCatInfoFinderInfo | kFSCatInfoPermissions;
    const FSRef folder_ = ref("");
    FSCatalogInfo info_{};
};

TEST_F(FileCreation, MakesWhatIsNotThere) {
    put("taken");
    fs::create_symlink("nowhere", at("link"));
    const std::tuple<std::u16string, OSErr, const char*> rows[] = {
        {u"new", noErr, "new"},         {u"sla/sh ü", noErr, "sla:sh ü"},
        {u"taken", dupFNErr, nullptr},  {u"link", dupFNErr, nullptr},
        {u"..", bdNamErr, nullptr},     {u"", errFSMissingName, nullptr},
        {u"col:on", bdNamErr, nullptr}, {std::u16string(256, u'x'), errFSNameTooLong, nullptr},
    };
    for (const auto& [name, status, path] : rows) {
        FSRef made{};
        EXPECT_EQ(create(name, &made, kTypeAndMode), status);
        if (path == nullptr) continue;
        const FSRef found = ref(path);
        EXPECT_EQ(FSCompareFSRefs(&made, &found), noErr);
        const FSCatalogInfo is = info(made, kTypeAndMode);
        EXPECT_EQ(is.finderInfo.fdType, OSType{'TEXT'});
        EXPECT_EQ(is.permissions.mode & 0777, 0640);
    }
}

TEST_F(FileCreation, LeavesNothingWhenItFails) {
    FSRef made{};
    EXPECT_EQ(create(u"file", &made, kFSCatInfoNodeID), paramErr);
    EXPECT_TRUE(fs::is_empty(root_));
    for (UInt32 nth = 1, fromThenOn = 0; fromThenOn < 2; ++nth) {
        OSErr status = noErr;
        const UInt32 hit =
            failing(nth, fromThenOn, [&] { status = createResFile(u"file", &made); });
        // Some failures do not matter, such as that of giving the side file its owner.
        EXPECT_EQ(fs::is_empty(root_), status != noErr) << nth << " status " << status;
        fs::remove(at("file"));
        fs::remove(at("._file"));
        if (hit == 0) nth = 0, ++fromThenOn;
    }
}

TEST_F(FileCreation, GivesResourceForks) {
    FSRef made{};
    EXPECT_EQ(createResFile(u"new", &made), noErr);
    expectOpensEmpty(made);
    FSRef again{};
    EXPECT_EQ(createResFile(u"new", &again), dupFNErr);
    EXPECT_EQ(FSCompareFSRefs(&made, &again), noErr);

    const std::string info32 = finderInfo('a   ', 'b   ');
    const std::string emptyFork = AppleDoubleBuilder{.entries = {{2, ""}, {9, info32}}}.build();
    const std::string noFork = AppleDoubleBuilder{.entries = {{9, info32}, {4, "note"}}}.build();
    put("._orphan", appleDouble(info32, "left over"));
    EXPECT_EQ(createResFile(u"orphan", &made), noErr);
    expectOpensEmpty(made);
    for (const std::string& sideFile : {emptyFork, noFork}) {
        put("old", "data");
        put("._old", sideFile);
        EXPECT_EQ(createResFile(u"old", &made), noErr);
        expectOpensEmpty(made);
        EXPECT_EQ(info(made, kFSCatInfoFinderInfo).finderInfo.fdCreator, OSType{'b   '});
    }
}

}  // namespace
}  // namespace osa::test
