// CFile and CResFile: identities, aliases, where resources are found, and what every operation puts
// back.
#include "Libraries/TCLClasses/CResFile.h"

#include <CoreServices/MacMemory.h>

#include "tests/support/Library.h"
#include "tests/support/ResourceLines.h"
#include "tests/support/TemporaryFolder.h"
#include "tools/samples/AppleDoubleBuilder.h"
#include "tools/samples/ResourceForkBuilder.h"

namespace osa::test {
namespace {

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
        file.Specify(specOf(folder_.path(name)), true);
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
    // Its fork goes before its map, whatever permission is asked.
    folder_.write("both", samples::ResourceForkBuilder().add('DATA', 1, "map").text());
    folder_.write("._both", samples::appleDouble(samples::finderInfoBytes('osas', 0, 0), fork()));
    using Row = std::tuple<const char*, SInt8, OSStatus, bool, bool>;
    for (const auto& [name, permission, status, isBundle, hasFork] :
         {Row{"fork", fsRdPerm, noErr, false, true}, Row{"map", fsRdPerm, noErr, false, false},
          Row{"Tool.app", fsRdPerm, noErr, true, true},
          Row{"plain", fsRdPerm, fnfErr, false, false},
          Row{"Bare.app", fsRdPerm, fnfErr, false, false},
          Row{"both", fsCurPerm, noErr, false, true}, Row{"both", fsRdPerm, noErr, false, true},
          Row{"both", fsWrPerm, noErr, false, true}, Row{"both", fsRdWrPerm, noErr, false, true}}) {
        SCOPED_TRACE(name);
        const NoLeaks closed;
        CResFile file;
        specify(file, name);
        EXPECT_EQ(file.HasResFork(), hasFork);
        EXPECT_EQ(thrown([&, permission = permission] { file.Open(permission); }), status);
        EXPECT_EQ(file.IsOpen(), status == noErr);
        EXPECT_EQ(file.IsBundleResourceFile(), isBundle);
        if (!file.IsOpen()) continue;
        EXPECT_TRUE(file.ResourceExists('plst', SInt16{0}));
        EXPECT_FALSE(file.ResourceExists('DATA', SInt16{1}));
        EXPECT_TRUE(file.HasResFork());
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
    const CFileSpec parent = specOf(folder_.path());
    CResFile file;
    file.Specify(parent.Make("link"), true);
    file.ResolveFileAlias();
    TCLString name;
    file.GetName(name);
    EXPECT_EQ(name, utf16("script"));
    fs::rename(folder_.path("script"), folder_.path("moved"));
    EXPECT_FALSE(file.ExistsOnDisk()) << "the reference is to a name in a folder";
    fs::rename(folder_.path("moved"), folder_.path("script"));
    CFile other;
    other.Specify(parent.Make("folder"), true);
    EXPECT_EQ(thrown([&] { other.ResolveFileAlias(false); }), paramErr);
    other.Specify(parent.Make("broken"), true);
    EXPECT_EQ(thrown([&] { other.ResolveFileAlias(false); }), fnfErr);
}

TEST_F(ResFile, NamesFilesThatDoNotExistYetByFolderAndName) {
    for (const std::string leaf :
         {"new file", "50% of #1?", "slash/colon", "\xE6\x97\xA5\xF0\x9F\x98\x80"}) {
        SCOPED_TRACE(leaf);
        CFile file;
        file.Specify(specOf(folder_.path()), utf16(leaf), false);
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

/// What is done to a file with the resources of fork(), and which it has then.
struct Writing {
    const char* row;
    std::function<void(CResFile&)> work;
    Lines after;
};

const Lines kOld = {"TEXT 1128 40 'Name' description", "TEXT 129 0 ", "plst 0 0 p"};

const Writing kWritings[] = {
    {"new",
     [](CResFile& file) { file.StoreData('TEXT', 1, "new", 3, nullptr, 0); },
     {kOld[0], kOld[1], "TEXT 1 0 new", kOld[2]}},
    {"named, protected",
     [](CResFile& file) {
         file.StoreData('scpt', 128, "s", 1, reinterpret_cast<const UInt8*>("\1N"), 0x28);
     },
     {kOld[0], kOld[1], kOld[2], "scpt 128 40 'N' s"}},
    {"in place of a protected one",
     [](CResFile& file) { file.StoreData('TEXT', 1128, "", 0, nullptr, 8); },
     {kOld[1], "TEXT 1128 8 ", kOld[2]}},
    {"deleted", [](CResFile& file) { file.DeleteResource('TEXT', 1128); }, {kOld[1], kOld[2]}},
    {"not there", [](CResFile& file) { file.DeleteResource('plst', 7); }, kOld},
    {"changed outside",
     [](CResFile& file) {
         const ResFileRefNum current = CurResFile();
         file.MakeCurrent();
         const Handle handle = Get1Resource('TEXT', 129);
         const OSErr status = ResError();
         UseResFile(current);
         FailOSErr(status);
         SetHandleSize(handle, 2);
         FailOSErr(MemError());
         BlockMoveData("ab", *handle, 2);
         ChangedResource(handle);
         const OSErr changed = ResError();
         FailOSErr(changed);
         file.Update();
     },
     {kOld[0], "TEXT 129 0 ab", kOld[2]}},
};

TEST_F(ResFile, StoresReplacesAndDeletesWhicheverOperationFails) {
    writeWithFork("other");
    CResFile other;
    specify(other, "other");
    other.Open(fsRdPerm);
    const ResFileRefNum current = CurResFile();
    const std::string path = folder_.path("script");
    UInt32 faults = 0;
    for (std::size_t i = 0; i < 2 * std::size(kWritings); ++i) {
        const auto& [row, work, after] = kWritings[i / 2];
        for (UInt32 nth = 0, failed = 1; failed > 0; ++nth) {  // 0: opened for reading
            SCOPED_TRACE(row + (" " + std::to_string(nth)) + (i % 2 > 0 ? " and on" : ""));
            writeWithFork("script");
            const CFIndex blocks = OSALiveBlockCount();
            CResFile file;
            specify(file, "script");
            file.Open(nth == 0 ? fsRdPerm : fsRdWrPerm);
            UseResFile(current);
            OSAFailOperation(nth, i % 2 > 0);
            const OSStatus status = thrown([&] { work(file); });
            failed = nth == 0 ? 1 : OSAFailedOperations();
            OSAFailOperation(0, false);
            faults += failed > 0;
            EXPECT_EQ(CurResFile(), current);
            const Lines now = resourceLines(path);
            // An old resource is removed before the new one is written.
            const bool isUnharmed = now == kOld || now == Lines{kOld[1], kOld[2]};
            EXPECT_TRUE(now == after || (status != noErr && isUnharmed)) << status;
            EXPECT_TRUE(nth > 0 || (now == kOld && status == (after == kOld ? 0 : wrPermErr)));
            if (nth > 0) {
                // What is gone from the map is not deleted a second time, only written.
                if (status != noErr) work(file), file.Update();
                EXPECT_EQ(resourceLines(path), after) << "before it is closed";
                file.Close();
                EXPECT_EQ(resourceLines(path), after);
            }
            file.Close();
            const Handle loaded = Get1Resource('plst', 0);
            EXPECT_NE(*loaded, nullptr) << "loading is on";
            ReleaseResource(loaded);
            EXPECT_EQ(std::distance(fs::directory_iterator(folder_.path()), {}), 4);
            EXPECT_EQ(OSALiveBlockCount(), blocks + 1) << "the identity";
            EXPECT_EQ(OSAOpenFileCount(), 1);
        }
    }
    EXPECT_GT(faults, 100u);
}

TEST_F(ResFile, GivesFilesMapsInEitherForkOnceAndMakesThoseThatAreMissing) {
    for (const auto& [isDataFork, exists] : {std::pair(false, true), std::pair(true, true),
                                             std::pair(false, false), std::pair(true, false)}) {
        SCOPED_TRACE(std::to_string(isDataFork) + std::to_string(exists));
        if (exists) folder_.write("made", "");
        CResFile file;
        file.Specify(specOf(folder_.path()), utf16("made"), false);
        const auto create = [&] {
            isDataFork ? file.CreateNewDataFork('ToyS', 'osas') : file.CreateNew('ToyS', 'osas');
        };
        EXPECT_EQ(thrown(create), noErr);
        EXPECT_EQ(thrown(create), dupFNErr);
        file.Open(fsRdWrPerm);
        EXPECT_EQ(thrown([&] { file.StoreData('TEXT', 1, "x", 1, nullptr, 0); }),
                  isDataFork ? wrPermErr : noErr);
        EXPECT_EQ(thrown([&] { file.StoreResource('TEXT', 1, nullptr, nullptr, 0); }),
                  addResFailed);
        EXPECT_EQ(file.ResourceExists('TEXT', SInt16{1}), !isDataFork);
        EXPECT_EQ(file.GetCreator(), exists ? 0 : FourCharCode('ToyS'));
        file.Close();
        file.ThrowOut();
        EXPECT_TRUE(fs::is_empty(folder_.path()));
    }
}

}  // namespace
}  // namespace osa::test
