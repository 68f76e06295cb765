// CFileSpec: references that name nothing or something gone, children, bundles, trash, order.
#include "Libraries/MacToolboxLib/TBUtilities/CFileSpec.h"

#include <CoreServices/Folders.h>
#include <OSA/HostFolders.h>
#include <fcntl.h>
#include <sys/stat.h>

#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "tests/support/Library.h"
#include "tests/support/TemporaryFolder.h"

namespace osa::test {
namespace {

const std::function<void(const CFileSpec&)> kQueries[] = {
    [](const CFileSpec& spec) { spec.GetParent(); },
    [](const CFileSpec& spec) { spec.GetPermissions(); },
    [](const CFileSpec& spec) { spec.GetFinderInfo(); },
    [](const CFileSpec& spec) { spec.GetFinderXInfo(); },
    [](const CFileSpec& spec) { spec.GetVolume(); },
    [](const CFileSpec& spec) { spec.GetNodeID(); },
    [](const CFileSpec& spec) { spec.GetCreationDate(); },
    [](const CFileSpec& spec) { spec.GetModificationDate(); },
    [](const CFileSpec& spec) { spec.GetDisplayName(); },
    [](const CFileSpec& spec) { spec.GetPath(); },
    [](const CFileSpec& spec) { spec.Make("child"); },
    [](const CFileSpec& spec) { GetFileTypeAndCreator(&spec.GetFSRef(), nullptr, nullptr); },
};

TEST(CFileSpec, OfNothingAndOfSomethingGoneThrowsItsStatusInEveryQuery) {
    const TemporaryFolder folder;
    const CFileSpec gone = specOf(folder.write("gone", "x"));
    fs::rename(folder.write("other", "another file"), folder.path("gone"));
    for (const auto& [spec, status] :
         {std::pair(CFileSpec(), OSStatus{errFSBadFSRef}), std::pair(gone, OSStatus{fnfErr})}) {
        SCOPED_TRACE(status);
        for (const auto& query : kQueries) {
            EXPECT_EQ(thrown([&, &spec = spec] { query(spec); }), status) << &query - kQueries;
        }
        EXPECT_FALSE(spec.IsFolder() || spec.Exists());
        EXPECT_EQ(spec.GetURL().Get(), nullptr);
        EXPECT_TRUE(spec.GetBundleID().empty());
        EXPECT_EQ(thrown([&spec = spec] { spec.GetBundle(); }), memFullErr);
    }
    EXPECT_FALSE(CFileSpec().IsInTrash());
    EXPECT_EQ(thrown([&] { gone.IsInTrash(); }), fnfErr);
}

TEST(CFileSpec, FindsChildrenOfItsFolderAndNothingElse) {
    const TemporaryFolder folder;
    folder.write("Docs/a.txt", "x");
    folder.write("Docs/x\xC3\xA9:y", "x");
    const CFileSpec docs = specOf(folder.path("Docs"));
    EXPECT_TRUE(docs.IsFolder());
    EXPECT_EQ(docs.Make("a.txt").GetPath(), folder.path("Docs/a.txt"));
    TCLString name;
    docs.Make("x\xC3\xA9/y").GetName(name);
    EXPECT_EQ(name, utf16("x\xC3\xA9/y")) << "a colon on disk is a slash in a name";
    EXPECT_EQ(docs.Make("a.txt").GetParent().GetPath(), folder.path("Docs"));
    for (const char* const none : {"", ".", "..", "A.txt", "a.txt/", ":a.txt", "../Docs"}) {
        EXPECT_FALSE(docs.Exists(utf16(none))) << none;
    }
    EXPECT_FALSE(docs.Exists(TCLString(256, 'a')));
    EXPECT_FALSE(docs.Exists(TCLString({'a', 0, 'b'})));
    EXPECT_FALSE(docs.Make("a.txt").Exists(utf16("a.txt"))) << "a file has no children";
}

TEST(CFileSpec, TellsBundlesFromFoldersByTheirLayout) {
    const TemporaryFolder folder;
    folder.write("Tool.app/Contents/PkgInfo", "APPLtool");
    folder.write(
        "Script.scptd/Contents/Info.plist",
        "{ CFBundlePackageType = osas; CFBundleSignature = ToyS; CFBundleIdentifier = \"a.b\"; }");
    folder.write("Bare/Contents/Resources/x", "");
    folder.write("Doc.rtfd/TXT.rtf", "{\\rtf1}");
    folder.write("Plain/file", "");
    using Row = std::tuple<const char*, OSType, OSType, bool, bool>;
    for (const auto& [name, itsType, itsCreator, isBundle, isApplication] :
         {Row{"Tool.app", 'APPL', 'tool', true, true},
          Row{"Script.scptd", 'osas', 'ToyS', true, false},
          Row{"Bare", 'BNDL', 0x3F3F3F3F, true, false}, Row{"Doc.rtfd", 0, 0, true, false},
          Row{"Plain", 0, 0, false, false}}) {
        SCOPED_TRACE(name);
        const CFileSpec spec = specOf(folder.path(name));
        OSType type = 0, creator = 0;
        EXPECT_EQ(thrown([&] { GetFileTypeAndCreator(&spec.GetFSRef(), &type, &creator); }),
                  itsType == 0 ? fnfErr : noErr);
        EXPECT_EQ(type, itsType);
        EXPECT_EQ(creator, itsCreator);
        EXPECT_EQ(spec.IsBundle(), isBundle);
        EXPECT_EQ(spec.IsApplication(), isApplication);
    }
    EXPECT_EQ(specOf(folder.path("Script.scptd")).GetBundleID(), utf16("a.b"));
    EXPECT_EQ(specOf(folder.path("Tool.app")).GetDisplayName(), utf16("Tool"));
}

TEST(CFileSpec, IsInTheTrashBelowItsVolumesTrashAlone) {
    const TemporaryFolder folder;
    OSASetHostFolderRoot(folder.path().c_str());
    FSRef trash;
    const CFileSpec home = specOf(folder.path());
    EXPECT_FALSE(specOf(folder.write("outside", "")).IsInTrash()) << "no trash yet";
    ASSERT_EQ(FSFindFolder(home.GetVolume(), kTrashFolderType, kCreateFolder, &trash), noErr);
    const std::string path = CFileSpec(trash).GetPath();
    fs::create_directories(path + "/a/b");
    EXPECT_TRUE(specOf(path + "/a/b").IsInTrash());
    EXPECT_TRUE(specOf(path + "/a").IsInTrash());
    EXPECT_FALSE(CFileSpec(trash).IsInTrash());
    EXPECT_FALSE(specOf(folder.path("outside")).IsInTrash());
    EXPECT_FALSE(specOf("/").IsInTrash()) << "the walk ends at the root";
    OSASetHostFolderRoot(nullptr);
}

TEST(CFileSpec, ChangesModeBitsAloneAndReadsDatesAsTheFileSystemDoes) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "x");
    const timespec dates[2] = {{-86400, 0}, {4102444800, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), dates, 0), 0);
    CFileSpec spec = specOf(path);
    spec.SetPermissions(0640);
    EXPECT_EQ(spec.GetPermissions() & 07777, 0640);
    struct stat status;
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
    const UTCDateTime date = spec.GetModificationDate();
    const auto seconds = static_cast<std::int64_t>(date.highSeconds) << 32 | date.lowSeconds;
    EXPECT_EQ(seconds, 4102444800 + 2082844800);
    const CFileSpec other = specOf(folder.write("other", "x"));
    EXPECT_NE(spec < other, other < spec);
    EXPECT_FALSE(spec < spec);
    EXPECT_EQ(thrown([&] { static_cast<void>(spec < CFileSpec()); }), errFSBadFSRef);
}

TEST(CFileSpec, RefusesPathsBeyondItsBuffer) {
    const TemporaryFolder folder;
    std::string path = folder.path();
    while (path.size() + 201 < 2999) path += "/" + std::string(200, 'd');
    path += "/" + std::string(2998 - path.size(), 'e');
    ASSERT_EQ(path.size(), 2999U);
    fs::create_directories(path + "x");
    fs::create_directories(path);
    EXPECT_EQ(specOf(path).GetPath(), path);
    EXPECT_EQ(thrown([&] { specOf(path + "x").GetPath(); }), pathTooLongErr);
}

}  // namespace
}  // namespace osa::test
