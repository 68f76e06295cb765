// Alias files and links, resolved on disk; alias records built here.
#include <CoreServices/Aliases.h>
#include <CoreServices/MacMemory.h>

#include "platform/aliases/AliasRecord.h"
#include "tests/platform/files/FileFixture.h"
#include "tools/samples/ResourceForkBuilder.h"

namespace osa::test {
namespace {

struct AliasRecordBuilder {
    bool isFolder = false;
    std::string path{};        ///< below the mount point
    std::string mountPoint{};  ///< not kept when empty
    std::string macPath{};     ///< not kept when empty
    int version = 2;

    std::string build() const {
        ByteWriter record;
        record.u32(0).u16(0).u16(static_cast<std::uint16_t>(version)).u16(isFolder ? 1 : 0);
        if (version == 2) {
            record.pascalString("Disk").fill(38 - record.size()).fill(8).u32(0x1234);
            record.pascalString("name").fill(114 - record.size()).u32(0x5678);
            record.fill(150 - record.size());
        } else {
            record.fill(24 - record.size()).u32(0x1234).u32(0x5678).fill(58 - record.size());
        }
        extra(record, 0, "odd");
        if (!macPath.empty()) extra(record, 2, macPath);
        extra(record, 14, std::string("\0\x02\0a\0/", 6));
        if (!path.empty()) extra(record, 18, path);
        if (!mountPoint.empty()) extra(record, 19, mountPoint);
        record.u16(0xFFFF).u16(0);
        record.patch(4, record.size(), 2);
        return record.takeText();
    }

  private:
    static void extra(ByteWriter& record, std::uint16_t tag, const std::string& value) {
        record.u16(tag).u16(static_cast<std::uint16_t>(value.size())).text(value).align(2);
    }
};

/// An alias file's data fork, little-endian.
std::string bookmark(const std::vector<std::string>& components, const std::string& volumePath) {
    const auto words = [](std::initializer_list<std::uint32_t> values) {
        std::string bytes;
        for (std::uint32_t value : values) {
            for (int i = 0; i < 4; ++i, value >>= 8) bytes += static_cast<char>(value & 0xFF);
        }
        return bytes;
    };
    std::string body(4, '\0');
    const auto item = [&](std::uint32_t type, const std::string& value) {
        const auto offset = static_cast<std::uint32_t>(body.size());
        body += words({static_cast<std::uint32_t>(value.size()), type}) + value;
        body.resize((body.size() + 3) / 4 * 4);
        return offset;
    };
    std::string offsets;
    for (const std::string& component : components) offsets += words({item(0x0101, component)});
    const std::uint32_t array = item(0x0601, offsets);
    const std::uint32_t volume = item(0x0101, volumePath);
    const auto table = static_cast<std::uint32_t>(body.size());
    body += words({44, 0xFFFFFFFE, 1, 0, 2, 0x1004, array, 0, 0x2002, volume, 0});
    body.replace(0, 4, words({table}));
    std::string file = words({0x6B6F6F62, 0, 0x6B72616D, 0, 56});
    file.resize(56);
    return file + body;
}

std::string aliasInfo(UInt16 flags = kIsAlias) {
    return ByteWriter().text("alisMACS").u16(flags).fill(22).takeText();
}

class Aliases : public FileFixture {
  protected:
    Aliases() : FileFixture(Where::disk) {}
    void putAlias(const std::string& name, const std::string& record,
                  UInt16 flags = kIsAlias) const {
        put(name, "");
        put("._" + name, appleDouble(aliasInfo(flags),
                                     samples::ResourceForkBuilder().add('alis', 0, record).text()));
    }
};

TEST_F(Aliases, ResolveToWhatIsThere) {
    put("file");
    put("folder/in");
    const std::string below = root_.substr(1);
    std::string macPath = "Gone Disk" + root_ + "/file";
    std::replace(macPath.begin(), macPath.end(), '/', ':');
    putAlias("alias", AliasRecordBuilder{.path = below + "/file", .mountPoint = "/"}.build());
    putAlias("chain", AliasRecordBuilder{.path = below + "/alias", .mountPoint = "/"}.build());
    putAlias("toFolder",
             AliasRecordBuilder{.isFolder = true, .path = "folder", .mountPoint = root_}.build());
    putAlias("oldPath", AliasRecordBuilder{.macPath = macPath}.build());
    putAlias("version3",
             AliasRecordBuilder{.path = "file", .mountPoint = root_, .version = 3}.build());
    putAlias("broken", AliasRecordBuilder{.path = "none", .mountPoint = root_}.build());
    putAlias("otherKind", AliasRecordBuilder{.path = "folder", .mountPoint = root_}.build());
    putAlias("circle", AliasRecordBuilder{.path = "circle", .mountPoint = root_}.build());
    putAlias("damaged", "no record at all");
    putAlias("unflagged", AliasRecordBuilder{.path = "file", .mountPoint = root_}.build(), 0);
    const std::string inRoot = root_.substr(root_.rfind('/') + 1);
    const std::string aboveRoot = root_.substr(0, root_.rfind('/'));
    const fs::path folder(below + "/folder");
    const std::vector<std::string> way(folder.begin(), folder.end());
    for (const auto& [name, content] :
         {std::pair("bookmark", bookmark({inRoot, "file"}, aboveRoot)),
          std::pair("onAnotherDisk", bookmark(way, "/Volumes/None")),
          std::pair("toFolderByBookmark", bookmark({"folder"}, root_)),
          std::pair("outOfBookmark", bookmark({"folder", "..", "file"}, root_)),
          std::pair("cutBookmark", bookmark({"file"}, root_).substr(0, 80))}) {
        put(name, content);
        put("._" + std::string(name), appleDouble(aliasInfo(), {}));
    }
    put("unflaggedBookmark", bookmark({"file"}, root_));
    fs::create_symlink("file", at("link"));
    fs::create_symlink("nowhere", at("deadLink"));
    fs::create_symlink("selfLink", at("selfLink"));
    fs::create_symlink("alias", at("linkToAlias"));
    const std::tuple<const char*, OSErr, const char*, bool, bool> rows[] = {
        {"file", noErr, "file", false, false},
        {"folder", noErr, "folder", false, true},
        {"unflagged", noErr, "unflagged", false, false},
        {"alias", noErr, "file", true, false},
        {"chain", noErr, "file", true, false},
        {"toFolder", noErr, "folder", true, true},
        {"version3", noErr, "file", true, false},
        {"bookmark", noErr, "file", true, false},
        {"toFolderByBookmark", noErr, "folder", true, true},
        {"onAnotherDisk", noErr, "folder", true, true},
        {"unflaggedBookmark", noErr, "unflaggedBookmark", false, false},
        {"outOfBookmark", fnfErr, "outOfBookmark", false, false},
        {"cutBookmark", fnfErr, "cutBookmark", false, false},
        {"link", noErr, "file", true, false},
        {"linkToAlias", noErr, "file", true, false},
        {"broken", fnfErr, "broken", false, false},
        {"otherKind", fnfErr, "otherKind", false, false},
        {"circle", fnfErr, "circle", false, false},
        {"damaged", fnfErr, "damaged", false, false},
        {"deadLink", fnfErr, "deadLink", false, false},
        {"selfLink", fnfErr, "selfLink", false, false},
    };
    for (const auto& [name, status, target, wantedWasAlias, wantedIsFolder] : rows) {
        SCOPED_TRACE(name);
        FSRef object = unfollowed(name);
        const FSRef wanted = unfollowed(target);
        Boolean isFolder = 9, wasAlias = 9;
        EXPECT_EQ(FSResolveAliasFileWithMountFlags(&object, 1, &isFolder, &wasAlias,
                                                   kResolveAliasFileNoUI),
                  status);
        EXPECT_EQ(FSCompareFSRefs(&object, &wanted), noErr);
        EXPECT_EQ(wasAlias, wantedWasAlias);
        EXPECT_EQ(isFolder, wantedIsFolder);
    }
    FSRef chain = unfollowed("chain");
    const FSRef alias = unfollowed("alias");
    Boolean isFolder = 0, wasAlias = 0;
    EXPECT_EQ(FSResolveAliasFile(&chain, 0, &isFolder, &wasAlias), noErr);
    EXPECT_EQ(FSCompareFSRefs(&chain, &alias), noErr) << "one step only";
    EXPECT_EQ(FSIsAliasFile(&alias, &wasAlias, &isFolder), noErr);
    EXPECT_EQ(wasAlias, 1);
    FSRef zero{};
    EXPECT_EQ(FSResolveAliasFile(&zero, 1, &isFolder, &wasAlias), errFSBadFSRef);
    EXPECT_EQ(FSResolveAliasFile(nullptr, 1, &isFolder, &wasAlias), paramErr);
}

TEST_F(Aliases, WalkToTheirTargetWhenThereIsTime) {
    put("a/b/target");
    const FSRef target = ref("a/b/target");
    AliasHandle record = nullptr;
    ASSERT_EQ(FSNewAlias(nullptr, &target, &record), noErr);
    const auto handle = reinterpret_cast<Handle>(record);
    putAlias("alias", {*handle, static_cast<std::size_t>(GetHandleSize(handle))});
    DisposeHandle(handle);
    fs::rename(at("a/b/target"), at("moved"));
    FSRef object = unfollowed("alias");
    const FSRef moved = unfollowed("moved");
    Boolean isFolder = 0, wasAlias = 0;
    EXPECT_EQ(
        FSResolveAliasFileWithMountFlags(&object, 1, &isFolder, &wasAlias, kResolveAliasFileNoUI),
        fnfErr);
    EXPECT_EQ(FSResolveAliasFile(&object, 1, &isFolder, &wasAlias), noErr);
    EXPECT_EQ(FSCompareFSRefs(&object, &moved), noErr);
}

TEST(AliasRecord, GivesWhatACutRecordStillHolds) {
    const std::string whole = AliasRecordBuilder{.path = "/Scripts/A",
                                                 .mountPoint = "/",
                                                 .macPath = std::string("Disk:\0Sc/ripts:\0A", 17)}
                                  .build();
    const auto record = AliasRecord::parse(asBytes(whole));
    ASSERT_TRUE(record.ok());
    EXPECT_EQ(record->pathOnVolume, "Scripts/A");
    EXPECT_EQ(record->targetName, "a:");
    EXPECT_EQ(record->volumeName, "Disk");
    EXPECT_EQ(record->macPath, (std::vector<std::string>{"Disk", "Sc:ripts", "A"}));
    EXPECT_EQ(record->targetID, 0x5678u);
    const auto cut = AliasRecord::parse(asBytes(whole).first(165));
    ASSERT_TRUE(cut.ok());
    EXPECT_EQ(cut->targetName, "name");
    EXPECT_TRUE(cut->pathOnVolume.empty());
    EXPECT_FALSE(AliasRecord::parse(asBytes(whole).first(149)).ok());
    EXPECT_FALSE(AliasRecord::parse({}).ok());
}

}  // namespace
}  // namespace osa::test
