// Alias records made of objects and of paths, and resolved after what happens to files.
#include <CoreServices/Aliases.h>
#include <CoreServices/MacMemory.h>
#include <OSA/Diagnostics.h>

#include <functional>

#include "platform/aliases/AliasRecord.h"
#include "platform/files/Names.h"
#include "platform/files/Volumes.h"
#include "tests/platform/files/FileFixture.h"

namespace osa::test {
namespace {

class AliasRecords : public FileFixture {
  protected:
    ~AliasRecords() override { EXPECT_EQ(OSALiveBlockCount(), blocks_) << "leaked handles"; }

    AliasHandle aliasOf(const std::string& name, const FSRef* from = nullptr) const {
        const FSRef target = ref(name);
        AliasHandle alias = nullptr;
        const OSErr status = from == nullptr ? FSNewAliasMinimal(&target, &alias)
                                             : FSNewAlias(from, &target, &alias);
        EXPECT_EQ(status, noErr) << name;
        return alias;
    }

    static AliasRecord recordIn(AliasHandle alias) {
        const auto handle = reinterpret_cast<Handle>(alias);
        EXPECT_EQ(GetAliasSize(alias), GetHandleSize(handle));
        const auto record = AliasRecord::parse(
            {reinterpret_cast<std::byte*>(*handle), static_cast<std::size_t>(GetAliasSize(alias))});
        return record.ok() ? *record : AliasRecord();
    }

    /// Where the alias leads, with "!" behind it when that was told to be elsewhere; or the status.
    /// Disposes of the alias.
    std::string resolved(AliasHandle alias, const FSRef* from = nullptr) const {
        FSRef target{};
        Boolean wasChanged = 9;
        const OSErr status = FSResolveAlias(from, alias, &target, &wasChanged);
        DisposeHandle(reinterpret_cast<Handle>(alias));
        if (status != noErr) {
            EXPECT_EQ(wasChanged, 9);
            return std::to_string(status);
        }
        UInt8 path[4096] = {};
        EXPECT_EQ(FSRefMakePath(&target, path, sizeof path), noErr);
        std::string text = reinterpret_cast<char*>(path);
        if (text.starts_with(root_ + "/")) text.erase(0, root_.size() + 1);
        return text + (wasChanged != 0 ? "!" : "");
    }

    CFIndex blocks_ = OSALiveBlockCount();
};

TEST_F(AliasRecords, LeadBackThroughEveryName) {
    std::string longName;
    for (int i = 0; i < 30; ++i) longName += "äöü";
    const std::string names[] = {
        "plain",
        "two words",
        "100% #1",
        "Ünïcödé",
        "e\u0301 decomposed",
        "a:b",
        "日本語.txt",
        longName + ".scpt",
        "\xFF\xFE bytes",
        ".hidden",
        "ends with dot.",
        "tab\tname",
        std::string(255, 'x'),
    };
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        put("über:fold er/" + name);
        const AliasHandle alias = aliasOf("über:fold er/" + name);
        const Handle handle = reinterpret_cast<Handle>(alias);
        const auto nameLength = static_cast<UInt8>((*handle)[50]);
        EXPECT_TRUE(nameLength > 0 && nameLength <= 63);
        EXPECT_EQ(resolved(alias), "über:fold er/" + name);
    }
    EXPECT_EQ(resolved(aliasOf("über:fold er")), "über:fold er");
    FSRef root{};
    AliasHandle alias = nullptr;
    ASSERT_EQ(FSPathMakeRef(reinterpret_cast<const UInt8*>("/"), &root, nullptr), noErr);
    ASSERT_EQ(FSNewAliasMinimal(&root, &alias), noErr);
    EXPECT_EQ(resolved(alias), "/");
}

TEST_F(AliasRecords, FollowWhatHappensToTheTarget) {
    namespace fs = std::filesystem;
    struct Row {
        const char* what;
        std::function<void()> happens;
        std::string found;
    };
    const auto move = [this](const char* from, const char* to) { fs::rename(at(from), at(to)); };
    const Row rows[] = {
        {"nothing", [] {}, "a/b/file"},
        {"replaced", [&] { put("a/b/new"), move("a/b/new", "a/b/file"); }, "a/b/file"},
        {"renamed", [&] { move("a/b/file", "a/b/other"); }, "a/b/other!"},
        {"renamed, and another in its place",
         [&] { move("a/b/file", "a/b/other"), put("a/b/file"); }, "a/b/file"},
        {"folder renamed", [&] { move("a/b", "a/c"); }, "a/c/file!"},
        {"both renamed", [&] { move("a/b/file", "a/b/x"), move("a/b", "a/y"), move("a", "z"); },
         "z/y/x!"},
        {"copied back in a renamed folder",
         [&] { move("a/b", "a/c"), fs::remove(at("a/c/file")), put("a/c/file"); }, "a/c/file!"},
        {"deleted", [&] { fs::remove(at("a/b/file")); }, "-43"},
        {"now a folder", [&] { fs::remove(at("a/b/file")), fs::create_directory(at("a/b/file")); },
         "-43"},
        {"deleted, number taken by another file",
         [&] {
             fs::remove(at("a/b/file"));
             for (int i = 0; i < 9; ++i) put("a/b/other" + std::to_string(i));
         },
         "-43"},
        {"moved away", [&] { move("a/b/file", "file"); }, "-43"},
        {"moved to a folder seen again",
         [&] {
             move("a/b", "b2");
             const FSRef folder = ref("b2");
             info(folder, kFSCatInfoVolume | kFSCatInfoNodeID);
         },
         "b2/file!"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        for (const auto& entry : fs::directory_iterator(root_)) fs::remove_all(entry);
        put("a/b/file");
        const AliasHandle alias = aliasOf("a/b/file");
        row.happens();
        EXPECT_EQ(resolved(alias), row.found);
    }
}

TEST_F(AliasRecords, HoldWhatTheMacRecords) {
    put("Fo:lder/Näme.txt", "");
    put("Fo:lder/._Näme.txt", appleDouble(finderInfo('TEXT', 'ttxt'), {}));
    const FSRef target = ref("Fo:lder/Näme.txt");
    const AliasHandle alias = aliasOf("Fo:lder/Näme.txt");
    const AliasRecord record = recordIn(alias);
    const FSCatalogInfo facts =
        info(target, kFSCatInfoNodeID | kFSCatInfoParentDirID | kFSCatInfoCreateDate);
    EXPECT_EQ(record.targetID, facts.nodeID);
    EXPECT_EQ(record.parentID, facts.parentDirID);
    EXPECT_EQ(record.folderIDs.at(0), facts.parentDirID);
    EXPECT_EQ(static_cast<UInt32>(record.targetCreated >> 16), facts.createDate.lowSeconds);
    EXPECT_EQ(record.targetName, "Näme.txt");
    EXPECT_EQ(record.parentName, "Fo:lder");
    EXPECT_EQ(record.volumeName, bootVolumeName());
    EXPECT_EQ(record.type, FourCharCode{'TEXT'});
    EXPECT_EQ(record.creator, FourCharCode{'ttxt'});
    EXPECT_EQ(record.macPath.front(), record.volumeName);
    EXPECT_EQ("/" + record.pathOnVolume, at("Fo:lder/Näme.txt"));
    const Handle bytes = reinterpret_cast<Handle>(alias);
    EXPECT_EQ(std::string(*bytes + 50, 9), "\x08N\x8Ame.txt") << "Mac Roman";
    EXPECT_NE(std::string(*bytes, static_cast<std::size_t>(GetHandleSize(bytes)))
                  .find(":Fo/lder:N\x8Ame.txt"),
              std::string::npos);
    DisposeHandle(bytes);
}

TEST_F(AliasRecords, KnowTheWayFromTheirFile) {
    namespace fs = std::filesystem;
    put("one/docs/here");
    put("one/data/deep/file");
    const FSRef from = ref("one/docs/here");
    const AliasHandle alias = aliasOf("one/data/deep/file", &from);
    const AliasRecord record = recordIn(alias);
    EXPECT_EQ(record.levelsUp, 2);
    EXPECT_EQ(record.levelsDown, 3);
    fs::copy(at("one"), at("two"), fs::copy_options::recursive);
    fs::remove_all(at("one"));
    const FSRef moved = ref("two/docs/here");
    EXPECT_EQ(resolved(alias, &moved), "two/data/deep/file!");
}

TEST_F(AliasRecords, OfPathsNeedNoTarget) {
    std::string macRoot = bootVolumeName() + root_;
    std::replace(macRoot.begin(), macRoot.end(), '/', ':');
    put("there");
    std::filesystem::create_directory(at("folder"));
    struct Row {
        std::string path;
        OSErr made;
        std::string found;
    };
    const Row rows[] = {
        {macRoot + ":there", noErr, "there"},
        {macRoot + ":folder:", noErr, "folder"},
        {macRoot + ":folder", noErr, "folder"},
        {macRoot + ":later/slash", noErr, "later:slash"},
        {macRoot + ":never", noErr, "-43"},
        {bootVolumeName() + ":", noErr, "/"},
        {"No Such Disk:folder:leaf", noErr, "-35"},
        {"leaf", bdNamErr, ""},
        {":folder:leaf", bdNamErr, ""},
        {"Disk::leaf", bdNamErr, ""},
        {"Disk:..:leaf", bdNamErr, ""},
        {"", paramErr, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.path);
        AliasHandle alias = reinterpret_cast<AliasHandle>(&alias);
        ASSERT_EQ(NewAliasMinimalFromFullPath(static_cast<SInt16>(row.path.size()), row.path.data(),
                                              nullptr, nullptr, &alias),
                  row.made);
        EXPECT_EQ(alias == nullptr, row.made != noErr);
        if (alias == nullptr) continue;
        if (row.found.starts_with("later")) put(row.found);
        EXPECT_EQ(resolved(alias), row.found);
    }
}

TEST_F(AliasRecords, RefuseWhatIsNone) {
    FSRef target{};
    Boolean changed = 0;
    EXPECT_EQ(FSResolveAlias(nullptr, nullptr, &target, &changed), paramErr);
    const AliasHandle zeros = reinterpret_cast<AliasHandle>(NewHandleClear(200));
    EXPECT_EQ(resolved(zeros), "-50");
    AliasHandle alias = zeros;
    EXPECT_EQ(FSNewAliasMinimal(&target, &alias), errFSBadFSRef);
    EXPECT_EQ(alias, nullptr);
    EXPECT_EQ(GetAliasSize(nullptr), 0);
}

}  // namespace
}  // namespace osa::test
