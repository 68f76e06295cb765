// Forks changed by number.
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/files/ReferenceNumbers.h"
#include "tests/platform/files/FileFixture.h"

namespace osa::test {
namespace {

const std::u16string kNames[] = {u"", u"RESOURCE_FORK"};
constexpr ForkKind kKinds[] = {ForkKind::data, ForkKind::resource};

class ForkWriting : public FileFixture {
  protected:
    static OSErr write(SInt16 number, const std::string& text) {
        auto count = static_cast<SInt32>(text.size());
        return FSWrite(number, &count, text.data());
    }
    /// All of an open fork.
    static std::string all(SInt16 number) {
        SInt64 size = 0;
        EXPECT_EQ(FSGetForkSize(number, &size), noErr);
        std::string text(static_cast<std::size_t>(size), '?');
        const auto count = static_cast<UInt32>(size);
        EXPECT_EQ(FSReadFork(number, fsFromStart, 0, count, text.data(), nullptr), noErr);
        return text;
    }
};

TEST_F(ForkWriting, ChangesEitherFork) {
    for (const int i : {0, 1}) {
        SCOPED_TRACE(i);
        put("x", i == 0 ? "" : "data");
        const FSRef x = ref("x");
        SInt16 number = 0;
        ASSERT_EQ(open(x, kNames[i], fsRdWrPerm, number), noErr);
        EXPECT_EQ(write(number, "0123456789"), noErr);
        EXPECT_EQ(SetFPos(number, fsFromMark, -8), noErr);
        EXPECT_EQ(write(number, "ab"), noErr);
        SInt64 mark = 0;
        EXPECT_EQ(FSGetForkPosition(number, &mark), noErr);
        EXPECT_EQ(mark, 4);
        EXPECT_EQ(all(number), "01ab456789") << "what was written is seen";
        EXPECT_EQ(SetEOF(number, 5), noErr);
        EXPECT_EQ(FSGetForkPosition(number, &mark), noErr);
        EXPECT_EQ(mark, 5) << "the mark stays inside";
        UInt32 done = 0;
        EXPECT_EQ(FSWriteFork(number, fsFromLEOF, 2, 1, "!", &done), noErr);
        EXPECT_EQ(done, 1u);
        EXPECT_EQ(FSFlushFork(number), noErr);
        EXPECT_EQ(fork(x, kKinds[i]), std::string("01ab4\0\0!", 8));
        EXPECT_EQ(FSWriteFork(number, fsFromStart, 99, 0, nullptr, &done), noErr);
        EXPECT_EQ(all(number).size(), 8u) << "no bytes, no zeros before them";
        EXPECT_EQ(FSSetForkSize(number, fsFromLEOF, -6), noErr);
        EXPECT_EQ(FSSetForkSize(number, fsFromStart, -1), posErr);
        EXPECT_EQ(FSWriteFork(number, fsFromStart, INT64_MAX, 1, "!", &done), fileBoundsErr);
        EXPECT_EQ(FSCloseFork(number), noErr);
        EXPECT_EQ(fork(x, kKinds[i]), "01");
        EXPECT_EQ(content("x"), i == 0 ? "01" : "data");
        EXPECT_EQ(FSCloseFork(number), rfNumErr);
        const auto* const name = reinterpret_cast<const UniChar*>(kNames[i].data());
        EXPECT_EQ(FSDeleteFork(&x, kNames[i].size(), name), noErr);
        EXPECT_EQ(fork(x, kKinds[i]), "");
    }
}

TEST_F(ForkWriting, KeepsLargeResourceForksOutOfMemory) {
    put("x");
    put("._x", appleDouble(finderInfo(FourCC("osas"), 0), std::string(3 << 20, 'a')));
    const std::string part((1 << 20) + 1, 'b');
    SInt16 number = 0;
    ASSERT_EQ(open(ref("x"), kNames[1], fsRdWrPerm, number), noErr);
    const auto count = static_cast<UInt32>(part.size());
    EXPECT_EQ(FSWriteFork(number, fsFromStart, 1 << 20, count, part.data(), nullptr), noErr);
    EXPECT_EQ(FSCloseFork(number), noErr);
    const std::string now = fork(ref("x"), ForkKind::resource);
    const std::string a(1 << 20, 'a');
    EXPECT_TRUE(now == a + part + a.substr(1));
    EXPECT_EQ(names(), (std::set<std::string>{"x", "._x"}));
}

TEST_F(ForkWriting, GoesOneWriterAtATime) {
    put("x", "data");
    put("._x", appleDouble("", "fork"));
    const FSRef x = ref("x");
    const std::tuple<SInt8, SInt8, OSErr> rows[] = {
        {fsRdWrPerm, fsRdWrPerm, opWrErr}, {fsWrPerm, fsRdWrShPerm, opWrErr},
        {fsRdWrShPerm, fsWrPerm, opWrErr}, {fsRdWrShPerm, fsRdWrShPerm, noErr},
        {fsRdWrPerm, fsRdPerm, noErr},     {fsRdPerm, fsRdWrPerm, noErr},
        {fsCurPerm, fsRdWrPerm, opWrErr},  {fsRdWrPerm, fsCurPerm, noErr}};
    for (const auto& name : kNames) {
        for (const auto& [one, other, status] : rows) {
            SCOPED_TRACE(std::to_string(one) + ", " + std::to_string(other));
            SInt16 first = 0, second = 0;
            ASSERT_EQ(open(x, name, one, first), noErr);
            EXPECT_EQ(open(x, name, other, second), status);
            if (other == fsCurPerm) {
                EXPECT_EQ(write(second, "!"), wrPermErr);
            }
            if (one == other && status == noErr) {
                EXPECT_EQ(write(first, "!"), noErr);
                EXPECT_EQ(all(second)[0], '!');
            }
            if (other == fsRdPerm && name == kNames[1]) {
                EXPECT_EQ(SetEOF(first, 1), noErr);
                EXPECT_EQ(all(second), "!ork") << "what was opened is read on";
                EXPECT_EQ(SetEOF(second, 0), wrPermErr);
                EXPECT_EQ(SetEOF(first, 4), noErr);
                EXPECT_EQ(write(first, "!ork"), noErr);
            }
            EXPECT_EQ(FSClose(first), noErr);
            EXPECT_EQ(FSClose(second), status == noErr ? noErr : rfNumErr);
        }
    }
    SInt16 number = 0;
    ASSERT_EQ(open(x, u"", fsWrPerm, number), noErr);
    SInt32 count = 1;
    char byte = 0;
    EXPECT_EQ(FSRead(number, &count, &byte), permErr);
    EXPECT_EQ(FSDeleteFork(&x, 0, nullptr), fBsyErr);
    // Two names of one file: one data fork, and a side file each, but attributes in common.
    fs::create_hard_link(at("x"), at("h"));
    SInt16 one = 0, other = 0;
    EXPECT_EQ(open(ref("h"), u"", fsRdWrPerm, one), opWrErr);
    ASSERT_EQ(open(x, kNames[1], fsRdWrShPerm, one), noErr);
    EXPECT_EQ(open(ref("h"), kNames[1], fsRdWrShPerm, other), opWrErr);
    EXPECT_EQ(FSClose(one), noErr);
    ASSERT_EQ(open(ref("h"), kNames[1], fsRdWrShPerm, other), noErr);
    EXPECT_EQ(write(other, "of h"), noErr);
    for (const SInt16 each : {number, other}) EXPECT_EQ(FSClose(each), noErr);
    EXPECT_EQ(fork(ref("h"), kKinds[1]), "of h");
    EXPECT_NE(fork(x, kKinds[1]), "of h");
}

TEST_F(ForkWriting, TakesTurnsWithOtherProcesses) {
    put("x", "data");
    const FSRef x = ref("x");
    for (UInt32 round = 1000; round < 1100; ++round) {
        const std::string text = std::to_string(round);
        const pid_t child = ::fork();
        if (child == 0) {
            SInt16 number = 0;
            const OSErr opened = open(x, kNames[1], fsRdWrPerm, number);
            _exit(opened | write(number, text) | FSClose(number));
        }
        FSCatalogInfo set{};
        set.finderInfo.fdType = round;
        EXPECT_EQ(FSSetCatalogInfo(&x, kFSCatInfoFinderInfo, &set), noErr);
        int failed = 1;
        EXPECT_EQ(waitpid(child, &failed, 0), child);
        EXPECT_EQ(failed, 0);
        EXPECT_EQ(fork(x, ForkKind::resource), text);
        EXPECT_EQ(+info(x, kFSCatInfoFinderInfo).finderInfo.fdType, round);
    }
}

TEST_F(ForkWriting, SaysWhyItDoesNot) {
    put("x", "data");
    put("gone");
    const FSRef x = ref("x"), gone = ref("gone");
    const auto* name = reinterpret_cast<const UniChar*>(kNames[1].data());
    EXPECT_EQ(FSCreateFork(&x, kNames[1].size(), name), errFSForkExists);
    EXPECT_EQ(FSCreateFork(&x, 3, name), errFSBadForkName);
    SInt16 number = 0;
    EXPECT_EQ(open(x, kNames[1], fsRdPerm, number), noErr);
    EXPECT_EQ(all(number), "") << "an empty one";
    EXPECT_EQ(FSCloseFork(number), noErr);
    put("._x", "text");
    EXPECT_EQ(open(x, kNames[1], fsRdWrPerm, number), dupFNErr);
    fs::remove(at("._x"));
    ASSERT_EQ(open(gone, kNames[1], fsRdWrPerm, number), noErr);
    EXPECT_EQ(write(number, "late"), noErr);
    fs::remove(at("gone"));
    EXPECT_EQ(FSCloseFork(number), fnfErr);
    EXPECT_EQ(names(), std::set<std::string>{"x"}) << "nor does a fork without a file come to be";
    if (geteuid() != 0) GTEST_SKIP() << "only the superuser can become somebody else";
    chmod(root_.c_str(), 0755);
    for (const auto& [mode, status] : {std::pair{0444, fLckdErr}, std::pair{0644, wrPermErr}}) {
        chmod(at("x").c_str(), static_cast<mode_t>(mode));
        ASSERT_EQ(seteuid(65534), 0);
        for (const auto& which : kNames) EXPECT_EQ(open(x, which, fsRdWrPerm, number), status);
        EXPECT_EQ(open(x, u"", fsCurPerm, number), noErr);
        EXPECT_EQ(write(number, "!"), wrPermErr);
        EXPECT_EQ(FSClose(number), noErr);
        ASSERT_EQ(seteuid(0), 0);
    }
}

TEST_F(ForkWriting, OpensByFSSpecAndFlushesWhateverIsOpen) {
    put("x", "data");
    const FSRef x = ref("x");
    FSSpec spec{};
    ASSERT_EQ(FSGetCatalogInfo(&x, 0, nullptr, nullptr, &spec, nullptr), noErr);
    SInt16 number = 0;
    ASSERT_EQ(FSpOpenDF(&spec, fsRdWrPerm, &number), noErr);
    EXPECT_EQ(write(number, "more"), noErr);
    EXPECT_EQ(content("x"), "more");
    EXPECT_EQ(FSClose(number), noErr);
    fs::remove(at("x"));
    EXPECT_EQ(FSpOpenDF(&spec, fsRdWrPerm, &number), fnfErr);
    // A resource file's number goes to those who opened it.
    struct Other : OpenFile {
        Other() : OpenFile(Kind::resourceFile) {}
        Result<void> flush() override { return Failure(dskFulErr); }
    };
    const auto other = addOpenFile(std::make_shared<Other>());
    ASSERT_TRUE(other.ok());
    EXPECT_EQ(FSFlushFork(*other), dskFulErr);
    EXPECT_EQ(FSCloseFork(*other), rfNumErr);
    EXPECT_TRUE(removeOpenFile(*other, *findOpenFile(*other)));
    EXPECT_EQ(FSFlushFork(*other), rfNumErr);
}

TEST_F(ForkWriting, LeavesTheOldForkOrTheNewWhereverItFails) {
    FSRef x{};
    failEachCall(
        [&] {
            put("x", "data");
            put("._x", appleDouble("", std::string(5 << 18, 'f')));
            x = ref("x");
        },
        [&]() -> OSStatus {
            SInt16 number = 0;
            if (const OSErr status = open(x, kNames[1], fsRdWrPerm, number)) return status;
            const OSErr cut = SetEOF(number, 9 << 17);
            SInt32 size = 0;
            EXPECT_EQ(GetEOF(number, &size), noErr);
            EXPECT_EQ(size, cut == noErr ? 9 << 17 : 5 << 18);
            const OSErr written = FSWriteFork(number, fsFromStart, 3 << 19, 1, "!", nullptr);
            const OSErr closed = FSCloseFork(number);
            return cut != noErr ? cut : written != noErr ? written : closed;
        },
        [&](OSStatus status) {
            const std::size_t size = fork(x, ForkKind::resource).size();
            const bool isNew = size == (3 << 19) + 1;
            EXPECT_TRUE(size == 5 << 18 || size == 9 << 17 || isNew) << size;
            EXPECT_TRUE(isNew || status != noErr);
            EXPECT_EQ(names(), (std::set<std::string>{"x", "._x"}));
        });
}

}  // namespace
}  // namespace osa::test
