// CFile and CResFile: identities, aliases, where resources are found, and what every operation puts
// back.
#include "Libraries/TCLClasses/CResFile.h"

#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>
#include <OSA/Diagnostics.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "tests/support/TemporaryFolder.h"
#include "tools/samples/AppleDoubleBuilder.h"
#include "tools/samples/ResourceForkBuilder.h"

namespace osa::test {
namespace {

namespace fs = std::filesystem;

OSStatus thrown(const std::function<void()>& work) {
    try {
        work();
        return noErr;
    } catch (OSStatus status) {
        return status;
    }
}

TCLString utf16(const std::string& utf8) {
    return ToTCLString(utf8.data(), static_cast<UInt32>(utf8.size()), kCFStringEncodingUTF8);
}

std::string fork() {
    return samples::ResourceForkBuilder()
        .add('TEXT', 1128, "description", "Name", 0x28)
        .add('TEXT', 129, "")
        .add('plst', 0, "p")
        .text();
}

class ResFile : public testing::Test {
  protected:
    void writeWithFork(const std::string& name, FourCharCode type = 'osas',
                       std::uint16_t flags = 0) {
        folder_.write(name, "data");
        folder_.write("._" + name,
                      samples::appleDouble(samples::finderInfoBytes(type, 'ToyS', flags), fork()));
    }
    void specify(CFile& file, const std::string& name) {
        FSRef ref;
        FailOSErr(FSPathMakeRef(reinterpret_cast<const UInt8*>(folder_.path(name).c_str()), &ref,
                                nullptr));
        file.Specify(CFileSpec(ref), true);
    }

    TemporaryFolder folder_;
};

TEST_F(ResFile, OpensAForkThenAMapInTheDataForkThenABundlesMapElseNothing) {
    writeWithFork("fork");
    folder_.write("map", fork());
    folder_.write("Tool.app/Contents/Info.plist", "{ CFBundleExecutable = Tool; }");
    folder_.write("Tool.app/Contents/Resources/Tool.rsrc", fork());
    folder_.write("plain", "no resources anywhere");
    folder_.write("Bare.app/Contents/PkgInfo", "APPL????");
    struct Row {
        const char* name;
        OSStatus status;
        bool isBundle;
        bool hasFork;
    };
    for (const Row& row : {Row{"fork", noErr, false, true}, Row{"map", noErr, false, false},
                           Row{"Tool.app", noErr, true, true}, Row{"plain", fnfErr, false, false},
                           Row{"Bare.app", fnfErr, false, false}}) {
        SCOPED_TRACE(row.name);
        const CFIndex openBefore = OSAOpenFileCount();
        {
            CResFile file;
            specify(file, row.name);
            EXPECT_EQ(file.HasResFork(), row.hasFork);
            EXPECT_EQ(thrown([&] { file.Open(fsRdPerm); }), row.status);
            EXPECT_EQ(file.IsOpen(), row.status == noErr);
            EXPECT_EQ(file.IsBundleResourceFile(), row.isBundle);
            if (file.IsOpen()) {
                EXPECT_TRUE(file.ResourceExists('plst', SInt16{0}));
                EXPECT_TRUE(file.HasResFork());
            }
        }
        EXPECT_EQ(OSAOpenFileCount(), openBefore) << "the destructor closes";
    }
}

TEST_F(ResFile, TakesTheForkBeforeTheMapWhateverPermissionIsAskedAndWritesNothing) {
    folder_.write("both", samples::ResourceForkBuilder().add('DATA', 1, "map").text());
    folder_.write("._both",
                  samples::appleDouble(samples::finderInfoBytes('osas', 'ToyS', 0), fork()));
    for (const SInt8 permission : {fsCurPerm, fsRdPerm, fsWrPerm, fsRdWrPerm}) {
        CResFile file;
        specify(file, "both");
        file.Open(permission);
        EXPECT_TRUE(file.ResourceExists('plst', SInt16{0}));
        EXPECT_FALSE(file.ResourceExists('DATA', SInt16{1}));
        const Handle data = NewHandle(1);
        EXPECT_EQ(thrown([&] { file.StoreResource('DATA', 2, data, nullptr, 0); }), unimpErr);
        EXPECT_EQ(thrown([&] { file.DeleteResource('plst', 0); }), unimpErr);
        DisposeHandle(data);
        EXPECT_TRUE(file.ResourceExists('plst', SInt16{0}));
    }
}

TEST_F(ResFile, HandsOutHandlesThatOutliveIt) {
    writeWithFork("script");
    const CFIndex before = OSALiveBlockCount();
    CResFile file;
    specify(file, "script");
    file.Open(fsRdPerm);
    Str255 name;
    SInt16 attributes = 0;
    const Handle handle = file.RetrieveResource('TEXT', SInt16{1128}, name, &attributes);
    unsigned char wanted[] = "\4nAME";
    SInt16 id = 0;
    const Handle byName = file.RetrieveResource('TEXT', wanted, &id, nullptr);
    const Handle empty = file.RetrieveResource('TEXT', SInt16{129}, nullptr, nullptr);
    EXPECT_EQ(file.RetrieveResource('TEXT', SInt16{7}, nullptr, nullptr), nullptr);
    file.Close();
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(std::string(*handle, static_cast<std::size_t>(GetHandleSize(handle))), "description");
    EXPECT_EQ(std::string(name, name + 5), "\4Name");
    EXPECT_EQ(attributes, 0x28);
    EXPECT_EQ(id, 1128);
    ASSERT_NE(empty, nullptr);
    EXPECT_NE(*empty, nullptr);
    for (const Handle each : {handle, byName, empty}) DisposeAHandle(each);
    EXPECT_EQ(OSALiveBlockCount() - before, 1) << "the identity's descriptor alone";
}

TEST_F(ResFile, CopiesDataOfTheAskedSizeAndNeverReadsBeyondTheResource) {
    writeWithFork("script");
    CResFile file;
    specify(file, "script");
    file.Open(fsRdPerm);
    char exact[11];
    SInt32 attributes = 0;
    file.RetrieveData('TEXT', SInt16{1128}, exact, sizeof exact, nullptr, &attributes);
    EXPECT_EQ(std::string(exact, sizeof exact), "description");
    EXPECT_EQ(attributes, 0x28);
    std::string longer(100, '-');
    testing::internal::CaptureStderr();
    file.RetrieveData('TEXT', SInt16{1128}, longer.data(), 100, nullptr, nullptr);
    const std::string line = testing::internal::GetCapturedStderr();
    EXPECT_EQ(longer, "description" + std::string(89, '-'));
    EXPECT_TRUE(line.starts_with("Libraries/TCLClasses/CResFile:")) << line;
    EXPECT_TRUE(line.ends_with(": failed assertion `GetHandleSize(h) == rDataSize'\n")) << line;
    EXPECT_EQ(thrown([&] { file.RetrieveData('TEXT', SInt16{7}, exact, 11, nullptr, nullptr); }),
              resNotFound);
}

TEST_F(ResFile, PutsTheCallersFileAndTheLoadingSwitchBack) {
    writeWithFork("one");
    writeWithFork("two");
    CResFile one;
    specify(one, "one");
    one.Open(fsRdPerm);
    const ResFileRefNum current = CurResFile();
    CResFile two;
    specify(two, "two");
    two.Open(fsRdPerm);
    UseResFile(current);
    EXPECT_TRUE(two.ResourceExists('plst', SInt16{0}));
    EXPECT_FALSE(two.ResourceExists('plst', SInt16{1}));
    EXPECT_EQ(two.GetUniqueResourceID('TEXT'), 128);
    EXPECT_EQ(two.GetUniqueResourceID('none'), 128);
    const Handle unloaded = two.RetrieveEmptyResource('plst', SInt16{0});
    ASSERT_NE(unloaded, nullptr);
    EXPECT_EQ(*unloaded, nullptr);
    char byte;
    EXPECT_EQ(thrown([&] { two.RetrieveData('none', SInt16{0}, &byte, 1, nullptr, nullptr); }),
              resNotFound);
    EXPECT_EQ(CurResFile(), current);
    const Handle loaded = Get1Resource('plst', 0);
    EXPECT_NE(*loaded, nullptr) << "loading is on again, in the caller's file";
    ReleaseResource(loaded);
}

TEST_F(ResFile, FollowsAliasesOnceForAnIdentity) {
    writeWithFork("script");
    fs::create_symlink("script", folder_.path("link"));
    fs::create_symlink("nowhere", folder_.path("broken"));
    fs::create_directory(folder_.path("folder"));
    FSRef parent;
    FailOSErr(
        FSPathMakeRef(reinterpret_cast<const UInt8*>(folder_.path().c_str()), &parent, nullptr));
    const CFileSpec parentSpec(parent);
    CResFile file;
    file.Specify(parentSpec.Make("link"), true);
    file.ResolveFileAlias();
    TCLString name;
    file.GetName(name);
    EXPECT_EQ(name, utf16("script"));
    fs::rename(folder_.path("script"), folder_.path("moved"));
    EXPECT_FALSE(file.ExistsOnDisk()) << "the reference is to a name in a folder";
    fs::rename(folder_.path("moved"), folder_.path("script"));
    CFile other;
    other.Specify(parentSpec.Make("folder"), true);
    EXPECT_EQ(thrown([&] { other.ResolveFileAlias(false); }), paramErr);
    other.Specify(parentSpec.Make("broken"), true);
    EXPECT_EQ(thrown([&] { other.ResolveFileAlias(false); }), fnfErr);
}

TEST_F(ResFile, NamesFilesThatDoNotExistYetByFolderAndName) {
    FSRef parent;
    FailOSErr(
        FSPathMakeRef(reinterpret_cast<const UInt8*>(folder_.path().c_str()), &parent, nullptr));
    for (const std::string leaf :
         {"new file", "50% of #1?", "slash/colon", "\xE6\x97\xA5\xF0\x9F\x98\x80"}) {
        SCOPED_TRACE(leaf);
        CFile file;
        file.Specify(CFileSpec(parent), utf16(leaf), false);
        EXPECT_FALSE(file.ExistsOnDisk());
        EXPECT_FALSE(file.IsFileInTrash());
        TCLString name;
        file.GetName(name);
        EXPECT_EQ(name, utf16(leaf));
        EXPECT_EQ(file.GetParent().GetPath(), folder_.path());
        EXPECT_EQ(thrown([&] { file.GetFileSpec(); }), fnfErr);
        std::string onDisk = leaf;
        for (char& byte : onDisk) byte = byte == '/' ? ':' : byte;
        folder_.write(onDisk, "now it does");
        EXPECT_TRUE(file.ExistsOnDisk());
        CAEDesc url;
        CFile same;
        same.Specify(file.GetFileSpec(), true);
        same.GetFileSpec(url, true);
        EXPECT_TRUE(url.Is(typeFileURL));
        same.Specify(&file, true);
        EXPECT_EQ(same.GetFileSpec().GetNodeID(), file.GetFileSpec().GetNodeID());
    }
}

}  // namespace
}  // namespace osa::test
