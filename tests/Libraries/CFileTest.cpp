// CFile and CDataFile on real files: making, writing, renaming and deleting.
#include <CoreServices/Folders.h>
#include <CoreServices/MacMemory.h>
#include <OSA/HostFolders.h>

#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/MacToolboxLib/TBUtilities/SHandle.h"
#include "Libraries/TCLClasses/CDataFile.h"
#include "tests/support/Library.h"
#include "tests/support/TemporaryFolder.h"
#include "tools/samples/AppleDoubleBuilder.h"

namespace osa::test {
namespace {

std::string text(Handle handle) {
    return {*handle, static_cast<std::size_t>(GetHandleSize(handle))};
}

class Files : public testing::Test {
  protected:
    std::size_t count() const {
        return static_cast<std::size_t>(
            std::distance(fs::recursive_directory_iterator(folder_.path()), {}));
    }
    void writeWithSideFile(const std::string& name) {
        folder_.write(name, "data");
        const fs::path path(name);
        folder_.write((path.parent_path() / ("._" + path.filename().string())).string(),
                      samples::appleDouble(samples::finderInfoBytes('osas', 'ToyS', 0), "fork"));
    }

    TemporaryFolder folder_;
};

TEST_F(Files, AreMadeUnderFolderAndNameWhichStayTheirIdentity) {
    OSASetHostFolderRoot(folder_.path().c_str());
    CDataFile file;
    file.SpecifyTempFile(kOnSystemDisk, TCLString());
    file.CreateNew('ToyS', 'osas');
    TCLString name;
    file.GetName(name);
    EXPECT_EQ(name.find(utf16("Olk TempFile ")), 0u);
    CAEDesc identity;
    file.GetFileSpec(identity, false);
    EXPECT_TRUE(identity.Is(typeFileURL));
    EXPECT_EQ(file.GetFileType(), FourCharCode('osas'));
    EXPECT_EQ(file.GetCreator(), FourCharCode('ToyS'));
    testing::internal::CaptureStderr();
    EXPECT_EQ(thrown([&] { file.CreateNew('ToyS', 'osas'); }), dupFNErr);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("failed assertion `!ExistsOnDisk()'"),
              std::string::npos);
    file.SpecifyTempFile(kOnSystemDisk, utf16("named"));
    file.GetName(name);
    EXPECT_EQ(name, utf16("named"));
    OSASetHostFolderRoot(nullptr);
}

TEST_F(Files, TakeTheirSideFilesAlongWhenRenamedAndDeleted) {
    writeWithSideFile("old");
    CFile file;
    file.Specify(specOf(folder_.path("old")), true);
    unsigned char wanted[] = "\5caf\x8E?";
    folder_.write("._caf\xC3\xA9?", "somebody else's");
    EXPECT_EQ(thrown([&] { file.ChangeName(wanted); }), dupFNErr);
    EXPECT_EQ(file.GetFileType(), FourCharCode('osas'));
    fs::remove(folder_.path("._caf\xC3\xA9?"));
    file.ChangeName(wanted);
    EXPECT_TRUE(fs::exists(folder_.path("caf\xC3\xA9?")));
    EXPECT_EQ(file.GetFileType(), FourCharCode('osas')) << "the identity is the new name";
    EXPECT_EQ(count(), 2u);
    const SHandle alias(reinterpret_cast<Handle>(file.GetAlias()));
    file.ThrowOut();
    EXPECT_EQ(count(), 0u);
    Boolean wasChanged = false;
    FSRef target;
    EXPECT_EQ(
        FSResolveAlias(nullptr, reinterpret_cast<AliasHandle>(alias.Get()), &target, &wasChanged),
        fnfErr);
}

TEST_F(Files, ThrowFoldersOutWithoutFollowingLinks) {
    const TemporaryFolder outside;
    outside.write("kept", "");
    for (int i = 0; i < 150; ++i)
        writeWithSideFile("F/" + std::to_string(i % 3) + "/" + std::to_string(i));
    std::string deep = folder_.path("F");
    for (int i = 0; i < 300; ++i) deep += "/d";
    fs::create_directories(deep);
    fs::create_directory_symlink(outside.path(), folder_.path("F/1/link"));
    // What has a side file's or store's name, and is none.
    for (const char* const name : {"__MACOSX/readme", ".AppleDouble/sub/y", "0/.rsrc", "._sub/x",
                                   "0/._notes", ".finf/text"}) {
        folder_.write("F/" + std::string(name), "text");
    }
    CFile folder;
    folder.Specify(specOf(folder_.path("F")), true);
    folder.ThrowOut();
    EXPECT_EQ(count(), 0u);
    EXPECT_TRUE(fs::exists(outside.path("kept")));
    fs::create_directory_symlink(outside.path(), folder_.path("link"));
    const CFileSpec parent = specOf(folder_.path());
    folder.Specify(parent.Make("link"), true);
    folder.ThrowOut();
    EXPECT_TRUE(fs::exists(outside.path("kept"))) << "the link itself was thrown out";
    EXPECT_EQ(count(), 0u);
}

TEST_F(Files, AreReadAndWrittenWholeAndInPieces) {
    const std::string path = folder_.write("data", "a longer content than the next");
    fs::create_symlink("data", folder_.path("link"));
    {
        const NoLeaks closed;
        CDataFile file;
        file.Specify(specOf(folder_.path()).Make("link"), true);
        file.Open(fsRdWrPerm);
        const SHandle all(file.ReadAll());
        EXPECT_EQ(text(all.Get()), "a longer content than the next");
        SHandle next(NewHandle(5));
        std::copy_n("short", 5, *next.Get());
        file.WriteAll(next.Get());
        EXPECT_EQ(contentOf(path), "short");
        file.SetMark(-2, fsFromLEOF);
        file.WriteSome("elf", 3);
        EXPECT_EQ(file.GetMark(), 6);
        EXPECT_EQ(file.GetLength(), 6);
        file.SetMark(3, fsFromStart);
        char piece[4] = {};
        EXPECT_EQ(thrown([&] { file.ReadSome(piece, 4); }), eofErr);
        EXPECT_EQ(std::string(piece, 3), "elf");
        const SHandle purged(NewEmptyHandle());
        EXPECT_EQ(thrown([&] { file.WriteAll(purged.Get()); }), nilHandleErr);
        EXPECT_EQ(thrown([&] { file.WriteAll(nullptr); }), nilHandleErr);
        file.SetLength(0);
        const SHandle empty(file.ReadAll());
        EXPECT_EQ(text(empty.Get()), "");
        EXPECT_EQ(thrown([&] { file.SetMark(-1, fsFromStart); }), posErr);
        CDataFile second;
        second.Specify(&file, false);
        EXPECT_EQ(thrown([&] { second.Open(fsWrPerm); }), opWrErr);
        EXPECT_FALSE(second.IsOpen());
        second.Close();
    }
    EXPECT_EQ(contentOf(path), "");
}

TEST_F(Files, LeakNothingWhicheverOperationFails) {
    const std::string path = folder_.path("new");
    UInt32 nth = 1;
    for (UInt32 faults = 1; faults > 0; ++nth) {
        SCOPED_TRACE(nth);
        ASSERT_LT(nth, 2000u);
        {
            const NoLeaks closed;
            CDataFile file;
            file.Specify(specOf(folder_.path()), utf16("new"), false);
            const SHandle bytes(NewHandleClear(100));
            OSAFailOperation(nth, false);
            const OSStatus status = thrown([&] {
                file.CreateNew('ToyS', 'osas');
                file.Open(fsRdWrPerm);
                file.WriteAll(bytes.Get());
                file.Close();
            });
            faults = OSAFailedOperations();
            OSAFailOperation(0, false);
            if (status == noErr) {
                EXPECT_EQ(contentOf(path), std::string(100, '\0'));
            }
            if (file.IsOpen()) file.Close();
            if (file.ExistsOnDisk()) file.ThrowOut();
        }
        EXPECT_EQ(count(), 0u) << "no side file is left behind";
    }
    EXPECT_GT(nth, 20u);
}

}  // namespace
}  // namespace osa::test
