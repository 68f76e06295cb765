// The Resource Manager's published calls, on files.
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>
#include <CoreServices/Resources.h>
#include <OSA/Diagnostics.h>
#include <gtest/gtest.h>

#include <functional>
#include <thread>

#include "tests/support/TemporaryFolder.h"
#include "tools/samples/ResourceForkBuilder.h"

namespace osa {
namespace {

samples::ResourceForkBuilder sample(const std::string& text) {
    samples::ResourceForkBuilder builder;
    // Compressed: two literal bytes and the end mark, with its 18 bytes of header.
    ByteWriter compressed;
    compressed.u32(0xA89F6572).u16(18).u16(0x0801).u32(2).u32(0).u16(0).text("\x01zz\xFF");
    builder.add(FourCC("TEXT"), 1128, text, "Description", 0x20);
    builder.add(FourCC("TEXT"), 2000, "", nullptr);
    builder.add(FourCC("CODE"), 0, compressed.takeText(), nullptr, 0x01);
    builder.add(FourCC("CODE"), 1, "\xA8\x9F\x65\x72 and no header to speak of", nullptr, 0x01);
    builder.add(FourCC("CODE"), 2, "plain in spite of its bit", nullptr, 0x01);
    return builder;
}

class ResourceManager : public testing::Test {
  protected:
    FSRef ref(const std::string& path) const {
        FSRef result{};
        EXPECT_EQ(FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), &result, nullptr),
                  noErr);
        return result;
    }
    /// A file with the given resource fork.
    FSRef file(const std::string& name, std::string_view fork) const {
        folder_.write("._" + name, samples::wrappedFork(fork));
        return ref(folder_.write(name, "data"));
    }
    static std::string content(Handle handle) {
        if (handle == nullptr) return "(null)";
        if (*handle == nullptr) return "(empty)";
        return {*handle, static_cast<std::size_t>(GetHandleSize(handle))};
    }
    void SetUp() override {
        blocks_ = OSALiveBlockCount();
        files_ = OSAOpenFileCount();
    }
    void TearDown() override {
        EXPECT_EQ(OSALiveBlockCount(), blocks_);
        EXPECT_EQ(OSAOpenFileCount(), files_);
    }

    test::TemporaryFolder folder_;

  private:
    CFIndex blocks_ = 0;
    CFIndex files_ = 0;
};

TEST_F(ResourceManager, OpeningTellsWhy) {
    const std::string fork = sample("x").text();
    const struct {
        const char* row;
        FSRef ref;
        bool dataFork;
        SInt8 permission;
        OSErr status;
    } rows[] = {
        {"a resource fork", file("fork", fork), false, fsRdPerm, noErr},
        {"no resource fork", ref(folder_.write("bare", "text")), false, fsRdPerm, eofErr},
        {"an empty resource fork", file("empty", ""), false, fsRdPerm, eofErr},
        {"zeros", file("zeros", std::string(300, '\0')), false, fsRdPerm, eofErr},
        {"a fork that is no map", file("bad", std::string(300, 'x')), false, fsRdPerm, mapReadErr},
        {"a map in the data fork", ref(folder_.write("a.rsrc", fork)), true, fsRdPerm, noErr},
        {"an empty data fork", ref(folder_.write("none", "")), true, fsRdPerm, eofErr},
        {"a data fork of text", ref(folder_.write("b.txt", "text")), true, fsRdPerm, mapReadErr},
        {"a folder", ref(folder_.path()), true, fsRdPerm, notAFileErr},
        {"a fork asked for writing", file("locked", fork), false, fsRdWrPerm, noErr},
        {"a reference to nothing", FSRef{}, false, fsRdPerm, errFSBadFSRef},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.row);
        SInt16 number = 99;
        if (row.dataFork)
            EXPECT_EQ(FSOpenResourceFile(&row.ref, 0, nullptr, row.permission, &number),
                      row.status);
        else
            number = FSOpenResFile(&row.ref, row.permission);
        EXPECT_EQ(ResError(), row.status);
        EXPECT_EQ(number > 0, row.status == noErr);
        if (number <= 0) {
            EXPECT_EQ(number, -1);
            continue;
        }
        EXPECT_EQ(CurResFile(), number);
        CloseResFile(number);
        EXPECT_EQ(ResError(), noErr);
        EXPECT_EQ(CurResFile(), 0);
    }
    FSRef gone = ref(folder_.write("gone", "x"));
    std::filesystem::remove(folder_.path("gone"));
    EXPECT_EQ(FSOpenResFile(&gone, fsRdPerm), -1);
    EXPECT_EQ(ResError(), fnfErr);
    CloseResFile(77);
    EXPECT_EQ(ResError(), resFNotFound);
}

TEST_F(ResourceManager, GivesTheSameHandleUntilItIsReleasedOrDetached) {
    const FSRef script = file("script", sample("About\rit").text());
    const SInt16 number = FSOpenResFile(&script, fsRdPerm);
    const Handle text = Get1Resource(FourCC("TEXT"), 1128);
    EXPECT_EQ(content(text), "About\rit");
    EXPECT_EQ(Get1NamedResource(FourCC("TEXT"), reinterpret_cast<const UInt8*>("\x0B"
                                                                               "DESCRIPTION")),
              text);
    EXPECT_EQ(Get1IndResource(FourCC("TEXT"), 1), text);
    EXPECT_GE(Unique1ID(FourCC("TEXT")), 128);
    EXPECT_EQ(GetResource(FourCC("TEXT"), Unique1ID(FourCC("TEXT"))), nullptr);
    EXPECT_EQ(HomeResFile(text), number);
    EXPECT_EQ(HGetState(text) & kHandleResourceMask, kHandleResourceMask);

    SInt16 id = 0;
    ResType type = 0;
    Str255 name;
    GetResInfo(text, &id, &type, name);
    EXPECT_EQ(id, 1128);
    EXPECT_EQ(type, FourCC("TEXT"));
    EXPECT_EQ(std::string(name, name + 12),
              "\x0B"
              "Description");
    EXPECT_EQ(GetResAttrs(text), resPurgeable);
    EXPECT_EQ(GetResourceSizeOnDisk(text), 8);

    ReleaseResource(text);
    EXPECT_EQ(ResError(), noErr);
    const Handle again = Get1Resource(FourCC("TEXT"), 1128);
    DetachResource(again);
    EXPECT_EQ(HomeResFile(again), -1);
    EXPECT_EQ(ResError(), resNotFound);
    EXPECT_NE(Get1Resource(FourCC("TEXT"), 1128), again);
    const Handle nothing = Get1Resource(FourCC("TEXT"), 2000);
    EXPECT_EQ(content(nothing), "");
    CloseResFile(number);
    EXPECT_EQ(content(again), "About\rit") << "a detached handle outlives its file";
    DisposeHandle(again);
    ReleaseResource(nullptr);
    EXPECT_EQ(ResError(), resNotFound);
}

TEST_F(ResourceManager, KnowsEachOfManyHandlesAnyWayTheyGo) {
    samples::ResourceForkBuilder builder;
    for (int id = 0; id < 100; ++id) builder.add(FourCC("TEXT"), id, std::to_string(id));
    const FSRef many = file("many", builder.text());
    const SInt16 number = FSOpenResFile(&many, fsRdPerm);
    std::vector<Handle> handles(100);
    const auto expectAll = [&] {
        for (SInt16 id = 0; id < 100; ++id) {
            const Handle handle = handles[static_cast<std::size_t>(id)];
            SInt16 found = -1;
            if (handle == nullptr) continue;
            GetResInfo(handle, &found, nullptr, nullptr);
            ASSERT_EQ(found, id);
            ASSERT_EQ(Get1Resource(FourCC("TEXT"), id), handle);
        }
    };
    // 37 and 100 have no common factor: every resource is met once, in a jumble.
    for (std::size_t i = 0; i < 100; ++i)
        handles[i * 37 % 100] = Get1Resource(FourCC("TEXT"), static_cast<SInt16>(i * 37 % 100));
    expectAll();
    for (std::size_t i = 0; i < 60; ++i) {
        Handle& handle = handles[i * 73 % 100];
        ReleaseResource(handle);
        EXPECT_EQ(ResError(), noErr);
        handle = nullptr;
    }
    expectAll();
    CloseResFile(number);
}

TEST_F(ResourceManager, EverySuccessClearsTheError) {
    const FSRef script = file("script", sample("x").text());
    const SInt16 number = FSOpenResFile(&script, fsRdPerm);
    ResType type = 0;
    const std::function<void()> calls[] = {
        [] { Get1Resource(FourCC("TEXT"), 1128); },
        [] { CurResFile(); },
        [] { SetResLoad(true); },
        [] { EXPECT_EQ(Count1Types(), 2); },
        [] { EXPECT_EQ(Count1Resources(FourCC("CODE")), 3); },
        [&] { Get1IndType(&type, 2); },
        [=] { UseResFile(number); },
        [] { UseResFile(0); },
        [=] { CloseResFile(number); },
    };
    for (const auto& call : calls) {
        EXPECT_EQ(Get1Resource(FourCC("none"), 1), nullptr);
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
    const Handle text = Get1Resource(FourCC("TEXT"), 1128);
    EXPECT_EQ(content(text), "(empty)");
    LoadResource(Get1Resource(FourCC("CODE"), 2));
    EXPECT_EQ(content(Get1Resource(FourCC("CODE"), 2)), "plain in spite of its bit");
    SetResLoad(true);
    EXPECT_EQ(Get1Resource(FourCC("TEXT"), 1128), text);
    EXPECT_EQ(content(text), "text");
    EXPECT_EQ(content(Get1Resource(FourCC("CODE"), 0)), "zz");
    EXPECT_EQ(Get1Resource(FourCC("CODE"), 1), nullptr);
    EXPECT_EQ(ResError(), CantDecompress);
    CloseResFile(number);
}

TEST_F(ResourceManager, TheChainGoesFromTheLatestDown) {
    const FSRef one = file("one", sample("one").add(FourCC("STR "), 5, "only in one").text());
    const FSRef two = file("two", sample("two").text());
    const SInt16 first = FSOpenResFile(&one, fsRdPerm);
    const SInt16 second = FSOpenResFile(&two, fsRdPerm);
    EXPECT_EQ(Get1Resource(FourCC("STR "), 5), nullptr);
    EXPECT_EQ(content(GetResource(FourCC("STR "), 5)), "only in one");
    EXPECT_EQ(content(GetResource(FourCC("TEXT"), 1128)), "two");
    UseResFile(first);
    EXPECT_EQ(content(GetResource(FourCC("TEXT"), 1128)), "one");
    UseResFile(second);
    CloseResFile(second);
    EXPECT_EQ(CurResFile(), first);
    CloseResFile(first);
    EXPECT_EQ(GetResource(FourCC("STR "), 5), nullptr);
    EXPECT_EQ(ResError(), resNotFound);
}

TEST_F(ResourceManager, RefusedMemoryLeavesNothingBehind) {
    const FSRef script = file("script", sample("text").text());
    for (UInt32 nth = 1, kind = 0; kind < 4; ++nth) {
        OSAFailOperation(nth, kind % 2);
        const SInt16 number = FSOpenResFile(&script, kind < 2 ? fsRdPerm : fsRdWrPerm);
        const Handle plain = number > 0 ? Get1Resource(FourCC("TEXT"), 1128) : nullptr;
        const Handle expanded = plain != nullptr ? Get1Resource(FourCC("CODE"), 0) : nullptr;
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
                const Handle text = Get1Resource(FourCC("TEXT"), 1128);
                EXPECT_EQ(content(text), i == 0 ? "(empty)" : "file" + std::to_string(i));
                EXPECT_EQ(Get1Resource(FourCC("none"), 1), nullptr);
                EXPECT_EQ(ResError(), resNotFound);
                CloseResFile(number);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace osa
