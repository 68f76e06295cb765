// Alias holders and copied forks: what is found, compared and left behind.
#include <CoreServices/MacMemory.h>
#include <OSA/HostFolders.h>

#include "Libraries/MacToolboxLib/TBUtilities/CopyFork.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/MacToolboxLib/TBUtilities/SAliasHandle.h"
#include "tests/support/Library.h"
#include "tests/support/TemporaryFolder.h"
#include "tools/samples/AppleDoubleBuilder.h"

namespace osa::test {
namespace {

HFSUniStr255 nameOf(const std::string& text) {
    HFSUniStr255 name{};
    name.length = static_cast<UInt16>(text.size());
    std::copy(text.begin(), text.end(), name.unicode);
    return name;
}

class Alias : public testing::Test {
  protected:
    CFileSpec spec(const std::string& name) const {
        return specOf(name.empty() ? folder_.path() : folder_.path(name));
    }
    void move(const char* from, const char* to) const {
        fs::create_directories(fs::path(folder_.path(to)).parent_path());
        fs::rename(folder_.path(from), folder_.path(to));
    }
    std::string fork(const std::string& file, bool isResource) const {
        HFSUniStr255 name;
        isResource ? FSGetResourceForkName(&name) : FSGetDataForkName(&name);
        SInt16 refNum = 0;
        SInt64 size = 0;
        EXPECT_EQ(FSOpenFork(&spec(file).GetFSRef(), name.length, name.unicode, fsRdPerm, &refNum),
                  noErr);
        FSGetForkSize(refNum, &size);
        std::string content(static_cast<std::size_t>(size), '?');
        FSReadFork(refNum, fsFromStart, 0, static_cast<UInt32>(size), content.data(), nullptr);
        EXPECT_EQ(FSCloseFork(refNum), noErr);
        return content;
    }
    void writeSource(const std::string& data, const std::string& resources) const {
        folder_.write("source", data);
        folder_.write("._source",
                      samples::appleDouble(samples::finderInfoBytes('TEXT', 'ttxt', 0), resources));
    }

    const NoLeaks leaks_;
    TemporaryFolder folder_;
};

TEST_F(Alias, NamesItsTargetWhereverThatIs) {
    folder_.write("a/first", "");
    SAliasHandle alias;
    alias.Make(spec("a/first"));
    CFileSpec target;
    bool wasChanged = true;
    alias.Resolve(target, &wasChanged);
    EXPECT_FALSE(wasChanged);
    move("a/first", "b/second");
    alias.ResolveFast(target, &wasChanged);
    EXPECT_TRUE(wasChanged);
    EXPECT_EQ(alias.GetAliasName(), utf16("first")) << "which leaves the record";
    alias.FollowFinderAlias(target, false, &wasChanged);
    EXPECT_TRUE(wasChanged);
    EXPECT_EQ(alias.GetAliasName(), utf16("second"));
    EXPECT_TRUE(alias == spec("b/second"));
    move("b/second", "b/third");
    EXPECT_EQ(alias.GetName(), utf16("third"));
    folder_.write("other", "");
    EXPECT_FALSE(alias == spec("other"));
    alias.Update(spec("other"), spec("other"));
    EXPECT_EQ(alias.GetFileSpec().GetPath(), folder_.path("other"));
    fs::remove(folder_.path("other"));
    EXPECT_EQ(alias.GetName(), utf16("other"));
    EXPECT_FALSE(alias == spec("b/third"));
}

TEST_F(Alias, WritesNothingWhenItLeadsNowhere) {
    folder_.write("here", "");
    SAliasHandle none, gone;
    folder_.write("gone", "");
    gone.Make(spec("here"), spec("gone"));
    fs::remove(folder_.path("gone"));
    for (SAliasHandle* const alias : {&none, &gone}) {
        const OSStatus status = alias == &none ? OSStatus{paramErr} : OSStatus{fnfErr};
        for (const bool before : {false, true}) {
            bool wasChanged = before;
            CFileSpec target = spec("here");
            const std::string place = target.GetPath();
            EXPECT_EQ(alias->ResolveNoThrow(target, &wasChanged), status);
            EXPECT_EQ(alias->ResolveFastNoThrow(target, &wasChanged), status);
            EXPECT_EQ(alias->FollowFinderAliasNoThrow(target, true, &wasChanged), status);
            EXPECT_EQ(wasChanged, before);
            EXPECT_EQ(target.GetPath(), place);
        }
        EXPECT_EQ(thrown([&] { alias->GetFileSpec(); }), status);
    }
    EXPECT_EQ(thrown([&] { none.GetName(); }), paramErr);
    testing::internal::CaptureStderr();
    EXPECT_EQ(thrown([&] { none.Update(spec("here")); }), paramErr);
    const std::string line = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(line.starts_with("Libraries/MacToolboxLib/TBUtilities:")) << line;
    EXPECT_TRUE(line.ends_with(": failed assertion `GetAliasHandle()'\n")) << line;
}

TEST_F(Alias, TakesAnyBytes) {
    folder_.write("file", "");
    SAliasHandle whole;
    whole.Make(spec("file"));
    const auto handle = reinterpret_cast<Handle>(whole.GetAliasHandle());
    const std::string bytes(*handle, static_cast<std::size_t>(GetHandleSize(handle)));
    SAliasHandle copy;
    for (const std::size_t size :
         {bytes.size(), bytes.size() - 1, std::size_t{149}, std::size_t{0}}) {
        copy.Make(bytes.data(), static_cast<long>(size));
        const auto made = reinterpret_cast<Handle>(copy.GetAliasHandle());
        EXPECT_EQ(std::string(*made, static_cast<std::size_t>(GetHandleSize(made))),
                  bytes.substr(0, size));
        EXPECT_EQ(copy == spec("file"), size >= 150) << size;
    }
    OSAFailOperation(1, true);
    copy.Make(bytes.data(), 10);
    OSAFailOperation(0, false);
    EXPECT_EQ(copy.GetAliasHandle(), nullptr);
    CFileSpec target;
    EXPECT_EQ(copy.ResolveNoThrow(target, nullptr), paramErr);
}

TEST_F(Alias, ComparesByTargetsAndElseByNames) {
    for (const char* const name : {"b", "lost-a", "lost-c", "again/b"}) folder_.write(name, "");
    SAliasHandle b, sameB, otherB, lostA, lostC;
    b.Make(spec("b"));
    sameB.Make(spec(""), spec("b"));
    otherB.Make(spec("again/b"));
    lostA.Make(spec("lost-a"));
    lostC.Make(spec("lost-c"));
    const bool isFirst = static_cast<SInt32>(spec("b").GetNodeID()) <
                         static_cast<SInt32>(spec("again/b").GetNodeID());
    fs::remove(folder_.path("lost-a"));
    fs::remove(folder_.path("lost-c"));
    using Row =
        std::tuple<const char*, const SAliasHandleBase&, const SAliasHandleBase&, bool, bool, bool>;
    const Row rows[] = {
        {"one target", b, sameB, true, false, false},
        {"one name", b, otherB, false, isFirst, !isFirst},
        {"both lost", lostA, lostC, false, true, false},
        {"lost, itself", lostA, lostA, true, false, false},
        {"one lost", b, lostC, false, true, false},
    };
    for (const auto& [name, one, other, isEqual, isLess, isGreater] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(one == other, isEqual);
        EXPECT_EQ(one < other, isLess);
        EXPECT_EQ(other < one, isGreater);
    }
}

TEST_F(Alias, ForksAreCopiedWholeOrNotAtAll) {
    const std::string longFork(100000, 'r');
    writeSource("data", longFork);
    folder_.write("there", "much longer than the source's");
    fs::create_directory(folder_.path("dest"));
    move("there", "dest/there");
    for (const char* const name : {"new", "there"}) {
        CopyDataFork(spec("source"), spec("dest"), nameOf(name));
        CopyResourceFork(spec("source"), spec("dest"), nameOf(name));
        EXPECT_EQ(fork("dest/" + std::string(name), false), "data");
        EXPECT_EQ(fork("dest/" + std::string(name), true), longFork);
    }
    EXPECT_EQ(thrown([&] { CopyDataFork(spec("source"), spec(""), nameOf("source")); }), opWrErr);
    EXPECT_EQ(fork("source", false), "data");
    folder_.write("plain", "x");
    CopyResourceFork(spec("plain"), spec("dest"), nameOf("there"));
    EXPECT_EQ(fork("dest/there", true), "") << "a file without a resource fork has an empty one";
    EXPECT_EQ(thrown([&] { CopyFork(spec("plain"), spec("dest"), nameOf("none"), nameOf("x")); }),
              errFSBadForkName);
    EXPECT_EQ(fork("dest/none", false), "") << "the file stays";
}

TEST_F(Alias, CopyingThatFailsAnywhereLeavesTheOldForkAndNothingElse) {
    OSASetHostFolderRoot(folder_.path("home").c_str());
    writeSource(std::string(70000, 'd'), std::string(70000, 'r'));
    const std::string old(50000, 'o');
    folder_.write("old/file", old);
    folder_.write("old/._file", samples::appleDouble(samples::finderInfoBytes(0, 0, 0), old));
    const CFileSpec source = spec("source");
    for (const auto& [isResource, exists] : {std::pair(false, false), std::pair(false, true),
                                             std::pair(true, false), std::pair(true, true)}) {
        const auto copy = isResource ? CopyResourceFork : CopyDataFork;
        UInt32 failed = 1;
        for (UInt32 nth = 1; failed > 0 && nth < 500; ++nth) {
            SCOPED_TRACE(nth);
            fs::remove_all(folder_.path("dest"));
            fs::create_directory(folder_.path("dest"));
            if (exists) fs::copy(folder_.path("old"), folder_.path("dest"));
            const CFileSpec dest = spec("dest");
            const NoLeaks leaks;
            OSStatus status = noErr;
            failed = failing(nth, false,
                             [&] { status = thrown([&] { copy(source, dest, nameOf("file")); }); });
            EXPECT_TRUE(failed > 0 || status == noErr) << status;
            EXPECT_FALSE(fs::exists(folder_.path("home/tmp")) &&
                         !fs::is_empty(folder_.path("home/tmp")));
            if (!fs::exists(folder_.path("dest/file"))) continue;
            const std::string kept = exists ? old : std::string();
            EXPECT_TRUE(fork("dest/file", isResource) ==
                        (status == noErr ? fork("source", isResource) : kept));
            EXPECT_TRUE(fork("dest/file", !isResource) == kept);
        }
        EXPECT_EQ(failed, 0U);
    }
    OSASetHostFolderRoot(nullptr);
}

}  // namespace
}  // namespace osa::test
