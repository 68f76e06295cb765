// Forks by number, and the whole room under failing system calls.
#include "tests/platform/files/FileFixture.h"

namespace osa::test {
namespace {

const std::u16string kResourceName = u"RESOURCE_FORK";

class ForkCalls : public FileFixture {};

TEST_F(ForkCalls, RefuseWhatCannotBeOpened) {
    put("x", "data");
    put("d/in");
    const FSRef x = ref("x"), folder = ref("d"), gone = ref("d/in");
    fs::remove(at("d/in"));
    const std::tuple<const char*, FSRef, std::u16string, SInt8, OSErr> rows[] = {
        {"a fork of another name", x, u"DATA", 1, errFSBadForkName},
        {"a folder", folder, u"", 1, notAFileErr},
        {"a missing file", gone, u"", 1, fnfErr},
        {"a missing file, for writing", gone, u"", 3, fnfErr},
        {"a folder, for writing", folder, u"", 3, notAFileErr},
        {"an unknown permission", x, u"", 9, paramErr},
        {"a zeroed reference", FSRef{}, u"", 1, errFSBadFSRef},
    };
    for (const auto& [name, object, fork, permissions, status] : rows) {
        SCOPED_TRACE(name);
        SInt16 number = 7;
        EXPECT_EQ(open(object, fork, permissions, number), status);
        EXPECT_EQ(number, 0);
    }
    EXPECT_EQ(OSAOpenFileCount(), 0);
}

TEST_F(ForkCalls, MoveTheMarkByEveryMode) {
    put("x", "0123456789");
    SInt16 number = 0;
    ASSERT_EQ(open(ref("x"), u"", fsCurPerm, number), noErr);
    ASSERT_GT(number, 0);
    const std::tuple<const char*, SInt16, SInt32, OSErr, SInt32> rows[] = {
        {"from the start", fsFromStart, 4, noErr, 4},
        {"where it is", fsAtMark, 99, noErr, 4},
        {"on from the mark", fsFromMark, 3, noErr, 7},
        {"back from the mark", fsFromMark, -2, noErr, 5},
        {"back from the end", fsFromLEOF, -4, noErr, 6},
        {"before the start", fsFromStart, -1, posErr, 6},
        {"the end itself", fsFromStart, 10, noErr, 10},
        {"past the end", fsFromStart, 11, eofErr, 10},
        {"far before the start", fsFromMark, INT32_MIN, posErr, 10},
        {"no such mode", 4, 0, errFSBadPosMode, 10},
    };
    for (const auto& [name, mode, offset, status, wantedMark] : rows) {
        SCOPED_TRACE(name);
        SInt32 mark = -1;
        EXPECT_EQ(SetFPos(number, mode, offset), status);
        EXPECT_EQ(GetFPos(number, &mark), noErr);
        EXPECT_EQ(mark, wantedMark);
    }
    char buffer[16] = {};
    SInt32 count = 4;
    EXPECT_EQ(SetFPos(number, fsFromLEOF, -6), noErr);
    EXPECT_EQ(FSRead(number, &count, buffer), noErr);
    EXPECT_EQ(std::string(buffer, 4), "4567");
    count = 4;
    EXPECT_EQ(FSRead(number, &count, buffer), eofErr);
    EXPECT_EQ(count, 2) << "what there was is delivered";
    EXPECT_EQ(std::string(buffer, 2), "89");
    UInt32 actual = 9;
    EXPECT_EQ(FSReadFork(number, fsFromStart, INT64_MAX, 4, buffer, &actual), eofErr);
    EXPECT_EQ(actual, 0u);
    EXPECT_EQ(FSReadFork(number, fsFromStart, 1, 2, buffer, &actual), noErr);
    EXPECT_EQ(std::string(buffer, 2), "12");
    EXPECT_EQ(FSCloseFork(number), noErr);
    EXPECT_EQ(FSCloseFork(number), rfNumErr);
    EXPECT_EQ(FSRead(number, &count, buffer), rfNumErr);
}

TEST_F(ForkCalls, ReadTheEndOfAForkOfMoreThanTwoGigabytes) {
    fs::resize_file(put("huge"), (1ull << 31) + 4);
    SInt16 number = 0;
    ASSERT_EQ(open(ref("huge"), u"", fsRdPerm, number), noErr);
    SInt32 end = 0;
    EXPECT_EQ(GetEOF(number, &end), fileBoundsErr);
    SInt64 size = 0;
    EXPECT_EQ(FSGetForkSize(number, &size), noErr);
    EXPECT_EQ(size, (1ll << 31) + 4);
    char buffer[4] = {1, 1, 1, 1};
    EXPECT_EQ(FSReadFork(number, fsFromLEOF, -4, 4, buffer, nullptr), noErr);
    EXPECT_EQ(buffer[0], 0);
    EXPECT_EQ(FSClose(number), noErr);
}

// Whatever system call fails: a status or the right answer, and nothing is left open.
TEST_F(ForkCalls, SurviveEveryFailingSystemCall) {
    put("d/x", "data");
    put("d/._x", appleDouble(finderInfo(FourCC("osas"), 0), ""));
    const std::string bare = resourceFork("fork");
    put("d/.rsrc/x", bare);
    put("d/y", "data");
    const FSRef x = ref("d/x"), y = ref("d/y"), folder = ref("d");
    const auto openAndRead = [&](std::u16string_view name, const std::string& wanted) {
        SInt16 number = 0;
        if (open(x, name, fsRdPerm, number) != noErr) return;
        char buffer[4];
        SInt32 count = 4;
        EXPECT_TRUE(FSRead(number, &count, buffer) != noErr || std::string(buffer, 4) == wanted);
        EXPECT_EQ(FSCloseFork(number), noErr);
    };
    const std::function<void()> works[] = {
        [&] {
            FSCatalogInfo found;
            const auto all = kFSCatInfoGettableInfo;
            if (FSGetCatalogInfo(&x, all, &found, nullptr, nullptr, nullptr) != noErr) return;
            EXPECT_EQ(+found.finderInfo.fdType, FourCC("osas"));
            EXPECT_EQ(+found.rsrcLogicalSize, bare.size());
        },
        [&] { openAndRead(u"", "data"); },
        [&] { openAndRead(kResourceName, bare.substr(0, 4)); },
        [&] {
            FSIterator iterator = nullptr;
            if (FSOpenIterator(&folder, kFSIterateFlat, &iterator) != noErr) return;
            FSRef refs[8];
            ItemCount count = 0;
            const OSErr status = FSGetCatalogInfoBulk(iterator, 8, &count, nullptr, 0, nullptr,
                                                      refs, nullptr, nullptr);
            EXPECT_TRUE(status != noErr || count == 2) << count;
            FSCloseIterator(iterator);
        },
        [&] {
            FSRef made;
            const std::string path = at("d/../d/x");
            const auto* const bytes = reinterpret_cast<const UInt8*>(path.c_str());
            if (FSPathMakeRef(bytes, &made, nullptr) != noErr) return;
            EXPECT_NE(FSCompareFSRefs(&made, &x), errFSRefsDifferent);
        },
    };
    for (const auto& each : works) {
        SCOPED_TRACE(&each - works);
        const auto work = [&]() -> OSStatus {
            each();
            return OSAFailedOperations() > 0 ? ioErr : noErr;
        };
        // So that nothing is remembered of the other file.
        failEachCall([&] { info(y, kFSCatInfoFinderInfo); }, work, [](OSStatus) {});
    }
}

}  // namespace
}  // namespace osa::test
