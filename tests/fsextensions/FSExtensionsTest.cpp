// The extension routines on a real folder.
#include "fsextensions/FSExtensions.h"

#include <CoreServices/MacErrors.h>
#include <gtest/gtest.h>

#include <cstring>

#include "Libraries/TCLClasses/CFile.h"
#include "tests/support/TemporaryFolder.h"

namespace osa::test {
namespace {

FSRef RefTo(const std::string& path) {
    FSRef ref{};
    EXPECT_EQ(FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), &ref, nullptr), noErr);
    return ref;
}

TEST(FSExtensions, ReadBackWhatTheyWrite) {
    const TemporaryFolder folder;
    const FSRef refs[] = {RefTo(folder.write("sub/file", "data")), RefTo(folder.path("sub"))};
    for (const FSRef& ref : refs) {
        SCOPED_TRACE(&ref == refs ? "a file" : "a folder");
        FInfo info{'TEXT', 'ttxt', kHasBundle, {}, 0};
        FXInfo extended{};
        extended.fdPutAway = 7;
        EXPECT_EQ(FSSetFinderInfo(&ref, &info, nullptr), noErr);
        EXPECT_EQ(FSSetFinderInfo(&ref, nullptr, &extended), noErr);
        EXPECT_EQ(FSChangeFinderFlags(&ref, true, kIsInvisible | kIsStationery), noErr);
        EXPECT_EQ(FSChangeFinderFlags(&ref, false, kIsStationery), noErr);
        info.fdFlags |= kIsInvisible;
        FInfo nowInfo;
        FXInfo nowExtended;
        Boolean isFolder = false;
        EXPECT_EQ(FSGetFinderInfo(&ref, &nowInfo, &nowExtended, &isFolder), noErr);
        EXPECT_EQ(std::memcmp(&nowInfo, &info, sizeof info), 0);
        EXPECT_EQ(std::memcmp(&nowExtended, &extended, sizeof extended), 0);
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
    FSRef ref = RefTo(path), root = RefTo("/");
    const FSRef parent = RefTo(folder.path());
    EXPECT_EQ(FSCheckLock(&ref), noErr);
    std::filesystem::permissions(path, std::filesystem::perms(0444));
    EXPECT_EQ(FSCheckLock(&ref), fLckdErr);
    FSVolumeRefNum volume = 0;
    EXPECT_EQ(FSGetVRefNum(&ref, &volume), noErr);
    EXPECT_LT(volume, 0);
    EXPECT_EQ(FSGetParentRef(&ref, &ref), noErr) << "in its own place";
    EXPECT_EQ(FSCompareFSRefs(&ref, &parent), noErr);
    EXPECT_EQ(FSGetParentRef(&root, &root), fnfErr);
    EXPECT_TRUE(FSRefValid(&root));
    const FSRef none{};
    EXPECT_FALSE(FSRefValid(&none));
    EXPECT_EQ(FSChangeFinderFlags(&none, true, kIsInvisible), errFSBadFSRef);
}

}  // namespace
}  // namespace osa::test
