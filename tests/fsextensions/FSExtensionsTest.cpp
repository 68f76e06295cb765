// The extension routines on a real folder.
#include "fsextensions/FSExtensions.h"

#include <CoreServices/MacErrors.h>
#include <gtest/gtest.h>

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
    FSRef ref = RefTo(path), root = RefTo("/");
    const FSRef parent = RefTo(folder.path()), none{};
    EXPECT_EQ(FSCheckLock(&ref), noErr);
    std::filesystem::permissions(path, std::filesystem::perms(0444));
    EXPECT_EQ(FSCheckLock(&ref), fLckdErr);
    EXPECT_EQ(FSGetParentRef(&ref, &ref), noErr) << "in its own place";
    EXPECT_EQ(FSCompareFSRefs(&ref, &parent), noErr);
    EXPECT_EQ(FSGetParentRef(&root, &root), fnfErr);
    EXPECT_TRUE(FSRefValid(&root));
    EXPECT_EQ(FSChangeFinderFlags(&none, true, kIsInvisible), errFSBadFSRef);
}

}  // namespace
}  // namespace osa::test
