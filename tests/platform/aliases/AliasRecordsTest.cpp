// Alias records made of objects and of paths, and resolved after what happens to files.
#include <CoreServices/Aliases.h>
#include <CoreServices/MacMemory.h>
#include <OSA/Diagnostics.h>

#include <functional>
#include <thread>

#include "platform/aliases/AliasRecord.h"
#include "platform/files/Volumes.h"
#include "tests/platform/files/FileFixture.h"

namespace osa::test {
namespace {

namespace fs = std::filesystem;

class AliasRecords : public FileFixture {
  protected:
    ~AliasRecords() override { EXPECT_EQ(OSALiveBlockCount(), blocks_) << "leaked handles"; }

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
    /// Where the alias leads, with "!" behind it when that was told to be elsewhere; or the status.
    /// Disposes of the alias.
    std::string resolved(AliasHandle alias, const FSRef* from = nullptr) const {
        FSRef target{};
        Boolean wasChanged = 9;
        const OSErr status = FSResolveAlias(from, alias, &target, &wasChanged);
        DisposeHandle(reinterpret_cast<Handle>(alias));
        EXPECT_EQ(wasChanged > 1, status != noErr);
        if (status != noErr) return std::to_string(status);
        UInt8 path[4096] = {};
        EXPECT_EQ(FSRefMakePath(&target, path, sizeof path), noErr);
        std::string text = reinterpret_cast<char*>(path);
        if (text.starts_with(root_ + "/")) text.erase(0, root_.size() + 1);
        return text + (wasChanged != 0 ? "!" : "");
    }

    CFIndex blocks_ = OSALiveBlockCount();
};

TEST_F(AliasRecords, LeadBackThroughEveryName) {
    std::string longName = ".scpt";
    for (int i = 0; i < 30; ++i) longName = "äöü" + longName;
    for (const std::string& name :
         {std::string("100% #1"), std::string("e\u0301 Ünï"), std::string("a:b"), longName,
          std::string("\xFF\xFE bytes"), std::string("dot."), std::string(255, 'x')}) {
        SCOPED_TRACE(name);
        put("über:fold er/" + name);
        const AliasHandle alias = aliasOf("über:fold er/" + name);
        const auto nameLength = static_cast<UInt8>(bytesOf(alias)[50]);
        EXPECT_TRUE(nameLength > 0 && nameLength <= 63);
        EXPECT_EQ(resolved(alias), "über:fold er/" + name);
    }
}

TEST_F(AliasRecords, FollowWhatHappensToTheTarget) {
    struct Row {
        const char* what;
        std::function<void()> happens;
        std::string found;
    };
    const auto move = [this](const char* from, const char* to) { fs::rename(at(from), at(to)); };
    const auto lose = [this] {
        // Dates tell objects apart that were made in different ticks of the kernel's clock.
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        fs::remove(at("a/b/file"));
    };
    const Row rows[] = {
        {"nothing", [] {}, "a/b/file"},
        {"replaced", [&] { put("a/b/new"), move("a/b/new", "a/b/file"); }, "a/b/file"},
        {"renamed", [&] { move("a/b/file", "a/b/other"); }, "a/b/other!"},
        {"folder renamed", [&] { move("a/b", "a/c"); }, "a/c/file!"},
        {"all", [&] { move("a/b/file", "a/b/x"), move("a/b", "a/y"), move("a", "z"); }, "z/y/x!"},
        {"made anew", [&] { lose(), move("a/b", "a/c"), put("a/c/file"); }, "a/c/file!"},
        {"deleted, and its number taken", [&] { lose(), put("a/b/1"), put("a/b/2"); }, "-43"},
        {"now a folder", [&] { lose(), fs::create_directory(at("a/b/file")); }, "-43"},
        {"moved away", [&] { move("a/b/file", "file"); }, "-43"},
        {"moved with a folder that was seen again",
         [&] { move("a/b", "b2"), info(ref("b2"), kFSCatInfoVolume | kFSCatInfoNodeID); },
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
    EXPECT_EQ(resolved(alias), "Fo:lder/Näme.txt");
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
    EXPECT_EQ(resolved(reinterpret_cast<AliasHandle>(NewHandleClear(200))), "-50");
}

}  // namespace
}  // namespace osa::test
