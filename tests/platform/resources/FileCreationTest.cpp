// Making files and resource files.
#include <CoreServices/MacErrors.h>
#include <CoreServices/Resources.h>
#include <OSA/Diagnostics.h>

#include "tests/platform/files/FileFixture.h"

namespace osa::test {
namespace {

class FileCreation : public FileFixture {
  protected:
    OSErr create(const std::u16string& name, FSRef* made, FSCatalogInfoBitmap which = 0,
                 const FSCatalogInfo* info = nullptr) const {
        return FSCreateFileUnicode(&folder_, name.size(), units(name), which, info, made, nullptr);
    }
    OSErr createResFile(const std::u16string& name, FSRef* made, FSCatalogInfoBitmap which = 0,
                        const FSCatalogInfo* info = nullptr) const {
        FSCreateResFile(&folder_, name.size(), units(name), which, info, made, nullptr);
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
    std::size_t entries() const {
        const std::filesystem::directory_iterator all(root_);
        return static_cast<std::size_t>(std::distance(begin(all), end(all)));
    }
    static FSCatalogInfo textInfo(UInt16 mode) {
        FSCatalogInfo info{};
        info.finderInfo.fdType = 'TEXT';
        info.finderInfo.fdCreator = 'ttxt';
        info.permissions.mode = mode;
        return info;
    }

    const FSRef folder_ = ref("");
};

constexpr FSCatalogInfoBitmap kTypeAndMode = kFSCatInfoFinderInfo | kFSCatInfoPermissions;

TEST_F(FileCreation, MakesWhatIsNotThere) {
    put("taken");
    std::filesystem::create_symlink("nowhere", at("link"));
    const FSCatalogInfo settings = textInfo(0640);
    const std::tuple<std::u16string, OSErr, const char*> rows[] = {
        {u"new", noErr, "new"},         {u"sla/sh ü", noErr, "sla:sh ü"},
        {u"taken", dupFNErr, nullptr},  {u"link", dupFNErr, nullptr},
        {u"..", bdNamErr, nullptr},     {u"", errFSMissingName, nullptr},
        {u"col:on", bdNamErr, nullptr}, {std::u16string(256, u'x'), errFSNameTooLong, nullptr},
    };
    for (const auto& [name, status, path] : rows) {
        FSRef made{};
        EXPECT_EQ(create(name, &made, kTypeAndMode, &settings), status);
        if (path == nullptr) continue;
        const FSRef found = ref(path);
        EXPECT_EQ(FSCompareFSRefs(&made, &found), noErr);
        const FSCatalogInfo is = info(made, kTypeAndMode);
        EXPECT_EQ(is.finderInfo.fdCreator, OSType{'ttxt'});
        EXPECT_EQ(is.permissions.mode & 0777, 0640);
    }
}

TEST_F(FileCreation, LeavesNothingWhenItFails) {
    const FSCatalogInfo settings = textInfo(0600);
    FSRef made{};
    EXPECT_EQ(create(u"file", &made, kFSCatInfoNodeID, &settings), paramErr);
    EXPECT_EQ(create(u"file", &made, kFSCatInfoFinderInfo, nullptr), paramErr);
    EXPECT_EQ(entries(), 0u);
    for (UInt32 nth = 1;; ++nth) {
        OSAFailOperation(nth, 0);
        const OSErr status = createResFile(u"file", &made, kTypeAndMode, &settings);
        const bool wasHit = OSAFailedOperations() > 0;
        OSAFailOperation(0, 0);
        if (!wasHit) break;
        // Some failures do not matter, such as that of giving the side file its owner.
        EXPECT_EQ(entries(), status == noErr ? 2u : 0u) << nth << " status " << status;
        std::filesystem::remove(at("file"));
        std::filesystem::remove(at("._file"));
    }
}

TEST_F(FileCreation, GivesResourceForks) {
    const FSCatalogInfo settings = textInfo(0600);
    FSRef made{};
    EXPECT_EQ(createResFile(u"new", &made, kTypeAndMode, &settings), noErr);
    expectOpensEmpty(made);
    EXPECT_EQ(fork(made, ForkKind::resource).size(), 286u);
    EXPECT_EQ(info(made, kFSCatInfoFinderInfo).finderInfo.fdType, OSType{'TEXT'});
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
        EXPECT_EQ(fork(made, ForkKind::data), "data");
        EXPECT_EQ(info(made, kFSCatInfoFinderInfo).finderInfo.fdCreator, OSType{'b   '});
    }
    std::filesystem::create_directory(at("folder"));
    EXPECT_EQ(createResFile(u"folder", &made), dupFNErr);
    put("plain");
    put("._plain", "my own notes");
    EXPECT_EQ(createResFile(u"plain", &made), dupFNErr);
}

}  // namespace
}  // namespace osa::test
