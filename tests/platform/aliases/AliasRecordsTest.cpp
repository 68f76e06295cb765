// Alias records made of objects and of paths, and resolved after what happens to files.
#include <CoreServices/Aliases.h>
#include <CoreServices/MacMemory.h>

#include "platform/aliases/AliasRecord.h"
#include "platform/files/Volumes.h"
#include "tests/platform/files/FileFixture.h"

namespace osa::test {
namespace {

class AliasRecords : public FileFixture {
  protected:
    // Records tell of the boot volume, too.
    AliasRecords() : FileFixture(Where::disk) {}

    AliasHandle aliasOf(const std::string& name, const FSRef* from = nullptr) const {
        const FSRef target = ref(name);
        AliasHandle alias = nullptr;
        EXPECT_EQ(FSNewAlias(from, &target, &alias), noErr) << name;
        return alias;
    }
    static std::string bytesOf(AliasHandle alias) {
        const auto handle = reinterpret_cast<Handle>(alias);
        EXPECT_EQ(GetAliasSize(alias), GetHandleSize(handle));
        return {*handle, static_cast<std::size_t>(GetHandleSize(handle))};
    }
    /// Where the alias leads, with "!" behind it when the record was brought up to date, after
    /// which it must be; or the status. Disposes of the alias.
    std::string resolved(AliasHandle alias, const FSRef* from = nullptr) const {
        FSRef target{};
        Boolean wasChanged = 9;
        const std::string before = bytesOf(alias);
        const OSErr status = FSResolveAlias(from, alias, &target, &wasChanged);
        const std::string after = bytesOf(alias);
        EXPECT_EQ(wasChanged > 1, status != noErr);
        EXPECT_EQ(wasChanged == 1, before != after);
        if (wasChanged == 1) {
            Boolean again = 9;
            EXPECT_EQ(FSResolveAlias(from, alias, &target, &again), noErr);
            EXPECT_EQ(again, 0) << "still out of date";
        }
        DisposeHandle(reinterpret_cast<Handle>(alias));
        if (status != noErr) return std::to_string(status);
        std::string text = pathOf(target);
        if (text.starts_with(root_ + "/")) text.erase(0, root_.size() + 1);
        return text + (wasChanged != 0 ? "!" : "");
    }

    const NoLeaks leaks_;
};

TEST_F(AliasRecords, LeadBackThroughEveryName) {
    std::string longName = ".scpt";
    for (int i = 0; i < 30; ++i) longName = "äöü" + longName;
    for (const std::string& name :
         std::initializer_list<std::string>{"100% #1", "e\u0301 Ünï", "a:b", longName,
                                            "\xFF\xFE bytes", "dot.", std::string(255, 'x')}) {
        SCOPED_TRACE(name);
        put("über:fold er/" + name);
        const AliasHandle alias = aliasOf("über:fold er/" + name);
        const auto nameLength = static_cast<UInt8>(bytesOf(alias)[50]);
        EXPECT_TRUE(nameLength > 0 && nameLength <= 63);
        EXPECT_EQ(resolved(alias), "über:fold er/" + name);
    }
}

TEST_F(AliasRecords, FollowWhatHappensToTheTarget) {
    const auto move = [this](const char* from, const char* to) { fs::rename(at(from), at(to)); };
    const auto lose = [this] {
        // Dates tell objects apart that were made in different ticks of the kernel's clock.
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        fs::remove(at("a/b/file"));
    };
    const std::tuple<const char*, std::function<void()>, std::string> rows[] = {
        {"nothing", [] {}, "a/b/file"},
        {"replaced", [&] { put("a/b/new"), move("a/b/new", "a/b/file"); }, "a/b/file!"},
        {"renamed", [&] { move("a/b/file", "a/b/other"); }, "a/b/other!"},
        {"folder renamed", [&] { move("a/b", "a/c"); }, "a/c/file!"},
        {"all", [&] { move("a/b/file", "a/b/x"), move("a/b", "a/y"), move("a", "z"); }, "z/y/x!"},
        {"made anew", [&] { lose(), move("a/b", "a/c"), put("a/c/file"); }, "a/c/file!"},
        {"deleted, and its number taken", [&] { lose(), put("a/b/1"), put("a/b/2"); }, "-43"},
        {"now a folder", [&] { lose(), fs::create_directory(at("a/b/file")); }, "-43"},
        {"moved up", [&] { move("a/b/file", "file"); }, "file!"},
        {"moved down and renamed",
         [&] { fs::create_directories(at("a/b/c/d")), move("a/b/file", "a/b/c/d/e"); },
         "a/b/c/d/e!"},
        {"moved aside, its folder gone",
         [&] { put("q/x"), move("a/b/file", "q/y"), fs::remove_all(at("a")); }, "q/y!"},
        {"moved behind a link",
         [&] { move("a/b", "a/c"), fs::create_directory_symlink(at("a/c"), at("a/b")); },
         "a/c/file!"},
        {"renamed, its name taken", [&] { move("a/b/file", "a/b/file~"), put("a/b/file"); },
         "a/b/file~!"},
        {"moved with a folder that was seen again",
         [&] { move("a/b", "b2"), info(ref("b2"), kFSCatInfoVolume | kFSCatInfoNodeID); },
         "b2/file!"},
    };
    for (const auto& [what, happens, found] : rows) {
        SCOPED_TRACE(what);
        for (const auto& entry : fs::directory_iterator(root_)) fs::remove_all(entry);
        put("a/b/file");
        const AliasHandle alias = aliasOf("a/b/file");
        happens();
        EXPECT_EQ(resolved(alias), found);
    }
}

TEST_F(AliasRecords, HoldWhatTheMacRecords) {
    put("Fo:lder/Näme.txt", "");
    put("Fo:lder/._Näme.txt", appleDouble(finderInfo('TEXT', 'ttxt'), {}));
    const AliasHandle alias = aliasOf("Fo:lder/Näme.txt");
    const std::string bytes = bytesOf(alias);
    const auto record = AliasRecord::parse(asBytes(bytes));
    const FSCatalogInfo facts = info(ref("Fo:lder/Näme.txt"), kFSCatInfoGettableInfo);
    EXPECT_EQ(record->targetID, facts.nodeID);
    EXPECT_EQ(record->targetCreated >> 16, UInt64{facts.createDate.lowSeconds});
    EXPECT_EQ(record->targetName + record->parentName, "Näme.txtFo:lder");
    EXPECT_EQ("/" + record->pathOnVolume, at("Fo:lder/Näme.txt"));
    EXPECT_EQ(bytes.substr(50, 9), "\x08N\x8Ame.txt") << "Mac Roman";
    EXPECT_EQ(bytes.substr(122, 8), "TEXTttxt");
    EXPECT_NE(bytes.find(":Fo/lder:N\x8Ame.txt"), std::string::npos);
    fs::remove_all(at("Fo:lder"));
    HFSUniStr255 name{};
    CFStringRef path = nullptr;
    FSAliasInfoBitmap fields = 0;
    FSAliasInfo told{};
    ASSERT_EQ(FSCopyAliasInfo(alias, nullptr, &name, &path, &fields, &told), noErr);
    EXPECT_EQ(std::string(name.unicode, name.unicode + name.length), bootVolumeName());
    char text[4096] = {};
    EXPECT_TRUE(CFStringGetCString(path, text, sizeof text, kCFStringEncodingUTF8));
    CFRelease(path);
    EXPECT_EQ(text, at("Fo:lder/Näme.txt"));
    ASSERT_EQ(FSCopyAliasInfo(alias, &name, nullptr, nullptr, nullptr, nullptr), noErr);
    EXPECT_EQ(std::u16string(name.unicode, name.unicode + name.length), u"Näme.txt");
    EXPECT_EQ(fields & ~(kFSAliasInfoVolumeCreateDate | kFSAliasInfoTargetCreateDate), 0x7Cu);
    EXPECT_TRUE(told.fileType == 'TEXT' && told.nodeID == facts.nodeID &&
                told.parentDirID == facts.parentDirID && told.volumeIsBootVolume != 0 &&
                told.isDirectory == 0);
    EXPECT_EQ(resolved(alias), "-43");
}

TEST_F(AliasRecords, KnowTheWayFromTheirFile) {
    put("one/docs/here");
    put("one/data/deep/file");
    const FSRef from = ref("one/docs/here");
    const AliasHandle alias = aliasOf("one/data/deep/file", &from);
    fs::copy(at("one"), at("two"), fs::copy_options::recursive);
    fs::remove_all(at("one"));
    const FSRef copy = ref("two/docs/here");
    EXPECT_EQ(resolved(alias, &copy), "two/data/deep/file!");
}

TEST_F(AliasRecords, OfPathsNeedNoTarget) {
    std::string macRoot = bootVolumeName() + root_;
    std::replace(macRoot.begin(), macRoot.end(), '/', ':');
    fs::create_directory(at("folder"));
    const std::tuple<std::string, OSErr, std::string> rows[] = {
        {macRoot + ":folder:", noErr, "folder"},
        {macRoot + ":folder", noErr, "folder"},
        {macRoot + ":later/slash", noErr, "later:slash"},
        {macRoot + ":never", noErr, "-43"},
        {bootVolumeName() + ":", noErr, "/"},
        {"No Such Disk:folder:leaf", noErr, "-35"},
        {":folder:leaf", bdNamErr, ""},
        {"Disk:..:leaf", bdNamErr, ""},
        {"", paramErr, ""},
    };
    for (const auto& [path, status, found] : rows) {
        SCOPED_TRACE(path);
        AliasHandle alias = reinterpret_cast<AliasHandle>(&alias);
        const auto length = static_cast<SInt16>(path.size());
        ASSERT_EQ(NewAliasMinimalFromFullPath(length, path.data(), nullptr, nullptr, &alias),
                  status);
        EXPECT_EQ(alias == nullptr, status != noErr);
        if (found.starts_with("later")) put(found);
        if (alias == nullptr) continue;
        EXPECT_EQ(resolved(alias), found);
    }
    EXPECT_EQ(FSResolveAlias(nullptr, nullptr, nullptr, nullptr), paramErr);
}

/// What FSMatchAliasNoUI finds, in order; the status when that is nothing.
std::string matches(const FSRef* from, UInt32 rules, AliasHandle alias,
                    FSAliasFilterProcPtr filter = nullptr) {
    FSRef found[3];
    SInt16 count = 3;
    Boolean needsUpdate = 9;
    const std::string before(*reinterpret_cast<Handle>(alias), 150);
    const OSStatus status =
        FSMatchAliasNoUI(from, rules, alias, &count, found, &needsUpdate, filter, nullptr);
    EXPECT_EQ(before, std::string(*reinterpret_cast<Handle>(alias), 150));
    if (status != noErr) return count == 0 ? std::to_string(status) : "count";
    std::string text = needsUpdate != 0 ? "!" : "";
    for (SInt16 i = 0; i < count; ++i) {
        const fs::path path = pathOf(found[i]);
        text += " " + (path.parent_path().filename() / path.filename()).string();
    }
    return text;
}

TEST_F(AliasRecords, MatchByTheRulesInTheirOrder) {
    put("one/docs/from");
    put("one/data/x.7");
    const FSRef from = ref("one/docs/from");
    const AliasHandle alias = aliasOf("one/data/x.7", &from);
    EXPECT_EQ(matches(&from, 0, alias), " data/x.7");
    // The number is renamed, another file has the path, and a copy lies by the alias's own copy.
    fs::rename(at("one/data/x.7"), at("one/data/number"));
    put("one/data/x.7");
    put("two/docs/from");
    put("two/data/x.7");
    put("far/away/x.7");
    const FSRef copy = ref("two/docs/from");
    const auto discardFirst = [](const FSRef*, Boolean*, Ptr) {
        static bool isFirst = false;
        return static_cast<Boolean>(isFirst = !isFirst);
    };
    EXPECT_EQ(matches(nullptr, 0, alias), "! data/number data/x.7");
    EXPECT_EQ(matches(&copy, kARMSearch, alias), "! data/number data/x.7 data/x.7");
    EXPECT_EQ(matches(&copy, kARMSearchRelFirst, alias), "! data/x.7 data/number data/x.7");
    EXPECT_EQ(matches(&copy, kARMSearchRelFirst | kARMTryFileIDFirst, alias),
              "! data/number data/x.7 data/x.7");
    EXPECT_EQ(matches(nullptr, 0, alias, discardFirst), "! data/x.7");
    EXPECT_EQ(matches(nullptr, 0, alias, [](const FSRef*, Boolean*, Ptr) { return Boolean{1}; }),
              "-43");
    FSRef target{};
    Boolean wasChanged = 9;
    EXPECT_EQ(FSFollowFinderAlias(&copy, alias, 0, &target, &wasChanged), noErr);
    EXPECT_EQ(info(target, kFSCatInfoNodeID).nodeID,
              info(ref("two/data/x.7"), kFSCatInfoNodeID).nodeID)
        << "the way from the alias goes first";
    EXPECT_EQ(wasChanged, 1);
    fs::remove_all(at("two"));
    fs::remove_all(at("one"));
    EXPECT_EQ(matches(nullptr, kARMSearch, alias), "-43");
    EXPECT_TRUE(matches(nullptr, kARMSearchMore, alias).starts_with("! away/x.7"))
        << "nearest first, whatever else the volume holds";
    DisposeHandle(reinterpret_cast<Handle>(alias));
}

TEST_F(AliasRecords, AreUpdatedInTheirHandleWithWhatIsTheApplicationsKept) {
    put("a/file");
    put("longer folder name/a longer file name");
    const AliasHandle alias = aliasOf("a/file");
    SetAliasUserType(alias, 'mark');
    const std::string before = bytesOf(alias);
    const auto handle = reinterpret_cast<Handle>(alias);
    SetHandleSize(handle, static_cast<Size>(before.size()) + 7);
    std::copy_n("private", 7, *handle + before.size());
    for (const char* const name : {"longer folder name/a longer file name", "a/file"}) {
        const FSRef target = ref(name);
        Boolean wasChanged = 9;
        EXPECT_EQ(FSUpdateAlias(nullptr, &target, alias, &wasChanged), noErr);
        EXPECT_EQ(wasChanged, 1);
        EXPECT_EQ(FSUpdateAlias(nullptr, &target, alias, &wasChanged), noErr);
        EXPECT_EQ(wasChanged, 0);
        EXPECT_EQ(GetAliasUserType(alias), OSType{'mark'});
        EXPECT_EQ(std::string(*handle + GetAliasSize(alias), *handle + GetHandleSize(handle)),
                  "private");
    }
    EXPECT_EQ(std::string(*handle, before.size()), before);
    DisposeHandle(handle);
    const FSRef target = ref("a/file");
    const Handle none = NewHandleClear(200);
    const auto noAlias = reinterpret_cast<AliasHandle>(none);
    FSRef found{};
    EXPECT_EQ(FSUpdateAlias(nullptr, &target, noAlias, nullptr), paramErr);
    EXPECT_EQ(FSResolveAlias(nullptr, noAlias, &found, nullptr), paramErr);
    EXPECT_EQ(FSCopyAliasInfo(noAlias, nullptr, nullptr, nullptr, nullptr, nullptr), paramErr);
    SetHandleSize(none, 3);
    SetAliasUserType(noAlias, 'mark');
    DisposeHandle(none);
}

TEST_F(AliasRecords, SurviveEveryFailureOfTheSystem) {
    put("old/file");
    put("new/x");
    AliasHandle alias = nullptr;
    std::string before;
    const auto prepare = [&] {
        DisposeHandle(reinterpret_cast<Handle>(alias));
        fs::remove_all(at("new/file"));
        put("old/file");
        alias = aliasOf("old/file");
        before = bytesOf(alias);
        fs::rename(at("old/file"), at("new/file"));
    };
    Boolean wasChanged = 0;
    FSRef target{};
    failEachCall(
        prepare, [&] { return FSResolveAlias(nullptr, alias, &target, &wasChanged); },
        [&](OSStatus status) {
            EXPECT_TRUE(status == noErr || status == fnfErr) << status;
            const bool isChanged = status == noErr && wasChanged != 0;
            EXPECT_EQ(bytesOf(alias) != before, isChanged);
            const bool isFoundNow =
                status == noErr || FSResolveAlias(nullptr, alias, &target, nullptr) == noErr;
            EXPECT_TRUE(isFoundNow) << "given up for a failure that has passed";
        });
    const auto prepareUpdate = [&] { prepare(), target = ref("new/file"); };
    failEachCall(
        prepareUpdate, [&] { return FSUpdateAlias(nullptr, &target, alias, &wasChanged); },
        [&](OSStatus status) { EXPECT_EQ(bytesOf(alias) != before, status == noErr); });
    DisposeHandle(reinterpret_cast<Handle>(alias));
    alias = nullptr;
    const FSRef file = ref("new/file");
    failEachCall([] {}, [&] { return FSNewAlias(&file, &file, &alias); },
                 [&](OSStatus status) {
                     EXPECT_EQ(alias == nullptr, status != noErr);
                     DisposeHandle(reinterpret_cast<Handle>(alias));
                     alias = nullptr;
                 });
}

}  // namespace
}  // namespace osa::test
