// What the system answers, as statuses.
#include "platform/posix/FileSystem.h"

#include <sys/stat.h>

#include <cerrno>

#include "platform/posix/CatalogChanges.h"
#include "platform/posix/ErrnoStatus.h"
#include "tests/support/TemporaryFolder.h"

namespace osa::posix {
namespace {

class FileSystem : public testing::Test {
  protected:
    const test::TemporaryFolder folder_;
    const std::string root_ = folder_.path() + "/";
};

TEST_F(FileSystem, NeverWaitsForWhatIsNoFile) {
    ASSERT_EQ(mkfifo((root_ + "pipe").c_str(), 0600), 0);
    std::filesystem::create_symlink("pipe", root_ + "link");
    std::filesystem::create_symlink("circle", root_ + "circle");
    ASSERT_TRUE(writeFile(root_ + "file", asBytes("12345")).ok());
    const std::tuple<const char*, Follow, OSStatus> rows[] = {
        {"file", Follow::no, noErr},    {"pipe", Follow::yes, notAFileErr},
        {"", Follow::yes, notAFileErr}, {"link", Follow::no, notAFileErr},
        {"none", Follow::yes, fnfErr},  {"file/in", Follow::yes, fnfErr},
    };
    for (const auto& [name, follow, wantedStatus] : rows) {
        EXPECT_EQ(openFile(root_ + name, follow).status(), wantedStatus) << name;
    }
    EXPECT_EQ(status(root_ + "circle", Follow::yes).status(), fnfErr);
    EXPECT_EQ(status(root_ + std::string("file\0x", 6), Follow::no).status(), fnfErr);
    EXPECT_EQ(readFile(root_ + "file", 4).status(), fileBoundsErr);
    EXPECT_EQ(readFile(root_ + "file", 5)->size(), 5u);
    EXPECT_EQ(remove(root_ + "none").status(), fnfErr);
    EXPECT_EQ(createFolder(root_ + "file").status(), dupFNErr);
    ASSERT_TRUE(createFolder(root_ + "d").ok());
    ASSERT_TRUE(rename(root_ + "file", root_ + "d/file").ok());
    EXPECT_EQ(remove(root_ + "d").status(), fBsyErr);
}

TEST_F(FileSystem, ListsAttributesOrNone) {
    const std::string path = root_ + "file";
    ASSERT_TRUE(writeFile(path, {}).ok());
    EXPECT_EQ(listAttributes(root_ + "none").status(), fnfErr);
    EXPECT_TRUE(listAttributes("/proc/self/status").ok()) << "no attributes there";
    EXPECT_EQ(attribute(path, "user.none").status(), fnfErr);
    const std::string value(2000, 'v');
    if (!setAttribute(path, "user.first", asBytes(value)).ok()) GTEST_SKIP();
    ASSERT_TRUE(setAttribute(path, "user.second", asBytes("")).ok());
    const auto names = listAttributes(path);
    ASSERT_TRUE(names.ok());
    EXPECT_EQ(std::count(names->begin(), names->end(), "user.first"), 1);
    EXPECT_EQ(std::count(names->begin(), names->end(), "user.second"), 1);
    EXPECT_EQ(asText(*attribute(path, "user.first")), value);
}

TEST_F(FileSystem, TakesNamesBackWithoutHarmToOthers) {
    const auto put = [&](const char* name) {
        ASSERT_TRUE(writeFile(root_ + name, asBytes(name)).ok());
    };
    const auto text = [&](const char* name) {
        const auto bytes = readFile(root_ + name, 100);
        return bytes.ok() ? std::string(asText(*bytes)) : std::string("none");
    };
    put("a");
    put("b");
    std::filesystem::create_symlink("nowhere", root_ + "link");
    EXPECT_EQ(renameToFree(root_ + "a", root_ + "b").status(), dupFNErr);
    EXPECT_EQ(renameToFree(root_ + "a", root_ + "link").status(), dupFNErr);
    putBack(root_ + "a", root_ + "b");
    EXPECT_EQ(text("a") + text("b"), "ab") << "somebody else has the name by now";
    ASSERT_TRUE(exchangeNames(root_ + "a", root_ + "b").ok());
    EXPECT_EQ(text("a") + text("b"), "ba");
    exchangeBack(root_ + "a", root_ + "b");
    const auto aside = moveAside(root_ + "a");
    ASSERT_TRUE(aside.ok());
    EXPECT_EQ(aside->substr(root_.size(), 3), "._.");
    putBack(*aside, root_ + "a");
    // A second name, with the first still there, gone, and somebody else's.
    for (const char* first : {"a", "none", "b"}) {
        SCOPED_TRACE(first);
        ASSERT_TRUE(addName(root_ + "a", root_ + "second").ok());
        if (*first != 'a') {
            ASSERT_TRUE(remove(root_ + "a").ok());
        }
        if (*first == 'b') put("a");
        takeBackName(root_ + "a", root_ + "second");
        EXPECT_EQ(text("a"), "a");
        EXPECT_EQ(text("second"), *first == 'b' ? "a" : "none");
    }
    ASSERT_TRUE(createFolder(root_ + "tree").ok());
    std::filesystem::create_directory_symlink(root_, root_ + "tree/up");
    discardTree(root_ + "tree");
    EXPECT_EQ(text("tree") + text("b"), "noneb") << "no link is followed";
}

TEST(ErrnoStatus, TellsRefusalsApart) {
    EXPECT_EQ(statusFromErrno(EACCES, Intent::read), permErr);
    EXPECT_EQ(statusFromErrno(EACCES, Intent::write), wrPermErr);
    EXPECT_EQ(statusFromErrno(EPERM, Intent::changeCatalog), afpAccessDenied);
    EXPECT_EQ(statusFromErrno(0), ioErr) << "a failure never turns into success";
}

TEST(Time, IsSettledOnlyBehindTheCoarseClock) {
    const Time date{100, 990'000'000};
    EXPECT_FALSE(isSettled(date, {100, 990'000'000}));
    EXPECT_FALSE(isSettled(date, {101, 9'999'999}));
    EXPECT_TRUE(isSettled(date, {101, 10'000'000}));
    EXPECT_TRUE(isSettled(date, {200, 0}));
    EXPECT_FALSE(isSettled(date, {99, 0})) << "a date in the future";
}

}  // namespace
}  // namespace osa::posix
