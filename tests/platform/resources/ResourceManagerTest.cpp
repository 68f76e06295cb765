// The Resource Manager's published calls, on files.
#include <CoreServices/MacMemory.h>
#include <CoreServices/Resources.h>

#include "tests/support/TemporaryFolder.h"
#include "tools/samples/ResourceForkBuilder.h"

namespace osa::test {
namespace {

samples::ResourceForkBuilder sample(const std::string& text) {
    samples::ResourceForkBuilder builder;
    // Compressed: two literal bytes and the end mark, with its 18 bytes of header.
    ByteWriter compressed;
    compressed.u32(0xA89F6572).u16(18).u16(0x0801).u32(2).u32(0).u16(0).text("\x01zz\xFF");
    builder.add('TEXT', 1128, text, "Description", 0x20);
    builder.add('TEXT', 2000, "", nullptr);
    builder.add('CODE', 0, compressed.takeText(), nullptr, 0x01);
    builder.add('CODE', 1, "\xA8\x9F\x65\x72 and no header to speak of", nullptr, 0x01);
    builder.add('CODE', 2, "plain in spite of its bit", nullptr, 0x01);
    return builder;
}

class ResourceManager : public testing::Test {
  protected:
    /// A file with the given resource fork.
    FSRef file(const std::string& name, std::string_view fork) const {
        folder_.write("._" + name, samples::wrappedFork(fork));
        return refOf(folder_.write(name, "data"));
    }
    static std::string content(Handle handle) {
        if (handle == nullptr) return "(null)";
        if (*handle == nullptr) return "(empty)";
        return {*handle, static_cast<std::size_t>(GetHandleSize(handle))};
    }

    const NoLeaks leaks_;
    const TemporaryFolder folder_;
};

TEST_F(ResourceManager, OpeningTellsWhy) {
    const std::string fork = sample("x").text();
    using Row = std::tuple<const char*, FSRef, bool, SInt8, OSErr>;
    const Row rows[] = {
        {"a resource fork", file("fork", fork), false, fsRdPerm, noErr},
        {"no resource fork", refOf(folder_.write("bare", "text")), false, fsRdPerm, eofErr},
        {"an empty resource fork", file("empty", ""), false, fsRdPerm, eofErr},
        {"zeros", file("zeros", std::string(300, '\0')), false, fsRdPerm, eofErr},
        {"a fork that is no map", file("bad", std::string(300, 'x')), false, fsRdPerm, mapReadErr},
        {"a map in the data fork", refOf(folder_.write("a.rsrc", fork)), true, fsRdPerm, noErr},
        {"an empty data fork", refOf(folder_.write("none", "")), true, fsRdPerm, eofErr},
        {"a data fork of text", refOf(folder_.write("b.txt", "text")), true, fsRdPerm, mapReadErr},
        {"a folder", refOf(folder_.path()), true, fsRdPerm, notAFileErr},
        {"a fork asked for writing", file("locked", fork), false, fsRdWrPerm, noErr},
        {"a reference to nothing", FSRef{}, false, fsRdPerm, errFSBadFSRef},
    };
    for (const auto& [name, ref, isDataFork, permission, status] : rows) {
        SCOPED_TRACE(name);
        SInt16 number = 99;
        if (isDataFork)
            EXPECT_EQ(FSOpenResourceFile(&ref, 0, nullptr, permission, &number), status);
        else
            number = FSOpenResFile(&ref, permission);
        EXPECT_EQ(ResError(), status);
        EXPECT_EQ(number > 0, status == noErr);
        EXPECT_TRUE(number > 0 || number == -1);
        if (number <= 0) continue;
        EXPECT_EQ(CurResFile(), number);
        CloseResFile(number);
        EXPECT_EQ(ResError(), noErr);
        EXPECT_EQ(CurResFile(), 0);
    }
    FSRef gone = refOf(folder_.write("gone", "x"));
    fs::remove(folder_.path("gone"));
    EXPECT_EQ(FSOpenResFile(&gone, fsRdPerm), -1);
    EXPECT_EQ(ResError(), fnfErr);
    CloseResFile(77);
    EXPECT_EQ(ResError(), resFNotFound);
}

TEST_F(ResourceManager, GivesTheSameHandleUntilItIsReleasedOrDetached) {
    const FSRef script = file("script", sample("About\rit").text());
    const SInt16 number = FSOpenResFile(&script, fsRdPerm);
    const Handle text = Get1Resource('TEXT', 1128);
    EXPECT_EQ(content(text), "About\rit");
    const auto* const named = reinterpret_cast<const UInt8*>("\13DESCRIPTION");
    EXPECT_EQ(Get1NamedResource('TEXT', named), text);
    EXPECT_EQ(Get1IndResource('TEXT', 1), text);
    EXPECT_GE(Unique1ID('TEXT'), 128);
    EXPECT_EQ(GetResource('TEXT', Unique1ID('TEXT')), nullptr);
    EXPECT_EQ(HomeResFile(text), number);
    EXPECT_EQ(HGetState(text) & kHandleResourceMask, kHandleResourceMask);

    SInt16 id = 0;
    ResType type = 0;
    Str255 name;
    GetResInfo(text, &id, &type, name);
    EXPECT_EQ(id, 1128);
    EXPECT_EQ(type, FourCC("TEXT"));
    EXPECT_EQ(std::string(name, name + 12), "\13Description");
    EXPECT_EQ(GetResAttrs(text), resPurgeable);
    EXPECT_EQ(GetResourceSizeOnDisk(text), 8);

    ReleaseResource(text);
    EXPECT_EQ(ResError(), noErr);
    const Handle again = Get1Resource('TEXT', 1128);
    DetachResource(again);
    EXPECT_EQ(HomeResFile(again), -1);
    EXPECT_EQ(ResError(), resNotFound);
    EXPECT_NE(Get1Resource('TEXT', 1128), again);
    const Handle nothing = Get1Resource('TEXT', 2000);
    EXPECT_EQ(content(nothing), "");
    GetResInfo(nothing, nullptr, nullptr, name);
    GetResInfo(nothing, &id, nullptr, nullptr);
    EXPECT_TRUE(id == 2000 && name[0] == 0);
    CloseResFile(number);
    EXPECT_EQ(content(again), "About\rit") << "a detached handle outlives its file";
    DisposeHandle(again);
    ReleaseResource(nullptr);
    EXPECT_EQ(ResError(), resNotFound);
}

TEST_F(ResourceManager, EverySuccessClearsTheError) {
    const FSRef script = file("script", sample("x").text());
    const SInt16 number = FSOpenResFile(&script, fsRdPerm);
    ResType type = 0;
    const std::function<void()> calls[] = {
        [] { Get1Resource('TEXT', 1128); },
        [] { CurResFile(); },
        [] { SetResLoad(true); },
        [] { EXPECT_EQ(Count1Types(), 2); },
        [] { EXPECT_EQ(Count1Resources('CODE'), 3); },
        [&] { Get1IndType(&type, 2); },
        [=] { UseResFile(number); },
        [] { UseResFile(0); },
        [=] { CloseResFile(number); },
    };
    for (const auto& call : calls) {
        EXPECT_EQ(Get1Resource('none', 1), nullptr);
        EXPECT_EQ(ResError(), resNotFound);
        call();
        EXPECT_EQ(ResError(), noErr);
    }
    EXPECT_EQ(type, FourCC("CODE"));
}

TEST_F(ResourceManager, LoadsWhenAskedToAndExpandsWhatIsCompressed) {
    const FSRef script = file("script", sample("text").text());
    const SInt16 number = FSOpenResFile(&script, fsRdPerm);
    SetResLoad(false);
    const Handle text = Get1Resource('TEXT', 1128);
    EXPECT_EQ(content(text), "(empty)");
    LoadResource(Get1Resource('CODE', 2));
    EXPECT_EQ(content(Get1Resource('CODE', 2)), "plain in spite of its bit");
    SetResLoad(true);
    EXPECT_EQ(Get1Resource('TEXT', 1128), text);
    EXPECT_EQ(content(text), "text");
    EXPECT_EQ(content(Get1Resource('CODE', 0)), "zz");
    EXPECT_EQ(Get1Resource('CODE', 1), nullptr);
    EXPECT_EQ(ResError(), CantDecompress);
    CloseResFile(number);
}

TEST_F(ResourceManager, TheChainGoesFromTheLatestDown) {
    const FSRef one = file("one", sample("one").add('STR ', 5, "only in one").text());
    const FSRef two = file("two", sample("two").text());
    const SInt16 first = FSOpenResFile(&one, fsRdPerm);
    const SInt16 second = FSOpenResFile(&two, fsRdPerm);
    EXPECT_EQ(Get1Resource('STR ', 5), nullptr);
    EXPECT_EQ(content(GetResource('STR ', 5)), "only in one");
    EXPECT_EQ(content(GetResource('TEXT', 1128)), "two");
    UseResFile(first);
    EXPECT_EQ(content(GetResource('TEXT', 1128)), "one");
    UseResFile(second);
    CloseResFile(second);
    EXPECT_EQ(CurResFile(), first);
    CloseResFile(first);
    EXPECT_EQ(GetResource('STR ', 5), nullptr);
    EXPECT_EQ(ResError(), resNotFound);
}

TEST_F(ResourceManager, RefusedMemoryLeavesNothingBehind) {
    const FSRef script = file("script", sample("text").text());
    for (UInt32 nth = 1, kind = 0; kind < 4; ++nth) {
        OSAFailOperation(nth, kind % 2);
        const SInt16 number = FSOpenResFile(&script, kind < 2 ? fsRdPerm : fsRdWrPerm);
        const Handle plain = number > 0 ? Get1Resource('TEXT', 1128) : nullptr;
        const Handle expanded = plain != nullptr ? Get1Resource('CODE', 0) : nullptr;
        const OSErr status = ResError();
        const UInt32 failed = OSAFailedOperations();
        OSAFailOperation(0, false);
        EXPECT_EQ(expanded == nullptr, status != noErr) << nth;
        EXPECT_TRUE(expanded == nullptr || content(plain) + content(expanded) == "textzz") << nth;
        if (number > 0) CloseResFile(number);
        ASSERT_EQ(OSAOpenFileCount(), 0);
        ASSERT_LT(nth, 100u);
        if (failed == 0) nth = 0, ++kind;
    }
}

TEST_F(ResourceManager, ThreadsDoNotSeeEachOthersFiles) {
    std::vector<FSRef> refs;
    for (int i = 0; i < 4; ++i) {
        const std::string name = "file" + std::to_string(i);
        refs.push_back(file(name, sample(name).text()));
    }
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; round < 50; ++round) {
                EXPECT_EQ(CurResFile(), 0);
                const SInt16 number = FSOpenResFile(&refs[static_cast<std::size_t>(i)], fsRdPerm);
                if (i == 0) SetResLoad(false);
                const Handle text = Get1Resource('TEXT', 1128);
                EXPECT_EQ(content(text), i == 0 ? "(empty)" : "file" + std::to_string(i));
                EXPECT_EQ(Get1Resource('none', 1), nullptr);
                EXPECT_EQ(ResError(), resNotFound);
                CloseResFile(number);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace osa::test
