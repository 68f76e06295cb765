// The extension routines on a real folder.
#include "fsextensions/FSExtensions.h"

#include <CoreServices/MacMemory.h>

#include "Libraries/TCLClasses/CFile.h"
#include "tests/support/TemporaryFolder.h"

namespace osa::test {
namespace {

TEST(FSExtensions, ReadBackWhatTheyWrite) {
    const TemporaryFolder folder;
    const FSRef refs[] = {refOf(folder.write("sub/file", "data")), refOf(folder.path("sub"))};
    for (const FSRef& ref : refs) {
        FInfo info{'TEXT', 'ttxt', kHasBundle, {}, 0};
        FXInfo extended{4, {}, 0, 0, 0, 7};
        EXPECT_EQ(FSSetFinderInfo(&ref, &info, nullptr), noErr);
        EXPECT_EQ(FSSetFinderInfo(&ref, nullptr, &extended), noErr);
        EXPECT_EQ(FSChangeFinderFlags(&ref, true, kIsInvisible | kIsStationery), noErr);
        EXPECT_EQ(FSChangeFinderFlags(&ref, false, kIsStationery), noErr);
        Boolean isFolder = false;
        info = {};
        extended = {};
        EXPECT_EQ(FSGetFinderInfo(&ref, &info, &extended, &isFolder), noErr);
        EXPECT_EQ(info.fdCreator, FourCharCode('ttxt'));
        EXPECT_EQ(info.fdFlags, kHasBundle | kIsInvisible);
        EXPECT_EQ(+extended.fdPutAway, 7);
        EXPECT_EQ(isFolder, &ref != refs);
    }
    CFile file;
    file.Specify(CFileSpec(refs[0]), false);
    file.MakeVisible();
    FInfo info{};
    file.GetMacFileInfo(info);
    EXPECT_EQ(info.fdFlags, kHasBundle);
    info.fdType = 'osas';
    file.SetMacFileInfo(info);
    EXPECT_EQ(file.GetFileType(), FourCharCode('osas'));
}

TEST(FSExtensions, KnowParentsAndLocks) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "");
    FSRef ref = refOf(path), root = refOf("/");
    const FSRef parent = refOf(folder.path()), none{};
    EXPECT_EQ(FSCheckLock(&ref), noErr);
    fs::permissions(path, fs::perms(0444));
    EXPECT_EQ(FSCheckLock(&ref), fLckdErr);
    EXPECT_EQ(FSGetParentRef(&ref, &ref), noErr) << "in its own place";
    EXPECT_EQ(FSCompareFSRefs(&ref, &parent), noErr);
    EXPECT_EQ(FSGetParentRef(&root, &root), fnfErr);
    EXPECT_TRUE(FSRefValid(&root));
    EXPECT_EQ(FSChangeFinderFlags(&none, true, kIsInvisible), errFSBadFSRef);
}

SInt16 open(const std::string& path, const char16_t* fork, SInt8 permission) {
    const FSRef ref = refOf(path);
    const auto length = std::char_traits<char16_t>::length(fork);
    SInt16 number = 0;
    EXPECT_EQ(FSOpenFork(&ref, length, reinterpret_cast<const UniChar*>(fork), permission, &number),
              noErr);
    return number;
}

TEST(FSExtensions, CopyForksOfAnyLengthOverLongerAndShorterOnes) {
    const TemporaryFolder folder;
    const std::string source = folder.write("source", ""), target = folder.write("target", "");
    for (const std::size_t size : {70000u, 3u, 0u, 512u}) {
        const std::string content(size, 'x');
        folder.write("source", content);
        const SInt16 from = open(source, u"", fsRdPerm);
        const SInt16 to = open(target, u"RESOURCE_FORK", fsRdWrPerm);
        UInt32 bufferSize = 0;
        void* const buffer = GetTempBuffer(100000, &bufferSize);
        EXPECT_EQ(bufferSize, 32768u);
        EXPECT_EQ(FSCopyFork(from, to, buffer, bufferSize), noErr);
        DisposePtr(static_cast<Ptr>(buffer));
        EXPECT_EQ(FSCloseFork(to), noErr);
        EXPECT_EQ(FSCloseFork(from), noErr);
        const SInt16 copy = open(target, u"RESOURCE_FORK", fsCurPerm);
        std::string read(size + 1, '-');
        auto count = static_cast<SInt32>(read.size());
        EXPECT_EQ(FSRead(copy, &count, read.data()), eofErr);
        EXPECT_EQ(read, content + "-");
        FSCloseFork(copy);
    }
    OSAFailOperation(1, false);
    UInt32 actual = 0;
    void* const smaller = GetTempBuffer(32768, &actual);
    EXPECT_EQ(actual, 16384u);
    DisposePtr(static_cast<Ptr>(smaller));
    OSAFailOperation(1, true);
    EXPECT_EQ(GetTempBuffer(32768, &actual), nullptr);
    EXPECT_EQ(actual, 0u);
    OSAFailOperation(0, false);
}

TEST(FSExtensions, ReadHFSNames) {
    HFSUniStr255 name{};
    const unsigned char euro[] = "\2\xDB:";
    EXPECT_EQ(HFSNameGetUnicodeName(euro, kTextEncodingUnknown, &name), noErr);
    EXPECT_EQ(std::u16string(name.unicode, name.unicode + name.length), u"\u20AC:");
    const unsigned char empty[] = "";
    EXPECT_EQ(HFSNameGetUnicodeName(empty, kTextEncodingUnknown, &name), bdNamErr);
    EXPECT_EQ(HFSNameGetUnicodeName(nullptr, kTextEncodingUnknown, &name), paramErr);
}

}  // namespace
}  // namespace osa::test
