// The process list and the search for applications.
#include <CoreFoundation/CFRef.h>
#include <CoreFoundation/CFString.h>
#include <CoreServices/LaunchServices.h>
#include <CoreServices/MacErrors.h>
#include <CoreServices/Processes.h>
#include <OSA/Diagnostics.h>
#include <OSA/HostFolders.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/TemporaryFolder.h"

namespace osa::test {
namespace {

TEST(Processes, TheWalkMeetsTheCallerOnceAndEnds) {
    ProcessSerialNumber number{0, kNoProcess};
    ProcessSerialNumber own;
    ASSERT_EQ(GetCurrentProcess(&own), noErr);
    ASSERT_EQ(GetNextProcess(&number), noErr);
    Boolean same = false;
    EXPECT_EQ(SameProcess(&number, &own, &same), noErr);
    EXPECT_TRUE(same);
    EXPECT_EQ(GetNextProcess(&number), procNotFound);
    EXPECT_EQ(number.lowLongOfPSN, 0U);

    ProcessInfoRec info{};
    EXPECT_EQ(GetProcessInformation(&own, &info), paramErr) << "no length";
    info.processInfoLength = sizeof info;
    const ProcessSerialNumber current{0, kCurrentProcess};
    ASSERT_EQ(GetProcessInformation(&current, &info), noErr);
    EXPECT_EQ(info.processNumber.lowLongOfPSN, own.lowLongOfPSN);
    const ProcessSerialNumber nobody{7, 7};
    EXPECT_EQ(GetProcessInformation(&nobody, &info), procNotFound);
    EXPECT_EQ(ProcessInformationCopyDictionary(&nobody, 0), nullptr);

    FSRef place;
    ASSERT_EQ(GetProcessBundleLocation(&own, &place), noErr);
    UInt8 path[4096];
    ASSERT_EQ(FSRefMakePath(&place, path, sizeof path), noErr);
    EXPECT_TRUE(std::filesystem::equivalent(reinterpret_cast<const char*>(path), "/proc/self/exe"));
    const auto dictionary = CFRef<CFDictionaryRef>::Adopt(
        ProcessInformationCopyDictionary(&own, kProcessDictionaryIncludeAllInformationMask));
    ASSERT_TRUE(dictionary);
    EXPECT_TRUE(CFDictionaryContainsKey(dictionary.get(), CFSTR("BundlePath")));
}

TEST(LaunchServices, FindsAnApplicationThatMeetsEveryCriterion) {
    const TemporaryFolder home;
    home.write("Applications/Old/Deep/Three.app/Contents/PkgInfo", "APPLthre");
    home.write("Applications/Old/Quill.app/Contents/PkgInfo", "APPLquil");
    home.write("Applications/Pen.app/Contents/PkgInfo", "APPLpen ");
    home.write("Applications/Pen.app/Contents/Info.plist",
               "{ CFBundleIdentifier = \"org.example.Pen\"; }");
    OSASetHostFolderRoot(home.path().c_str());
    const struct {
        OSType creator;
        CFStringRef bundleID;
        CFStringRef name;
        OSStatus status;
    } rows[] = {
        {0x7175696C, nullptr, nullptr, noErr},  // 'quil', one folder down
        {0, CFSTR("ORG.example.pen"), nullptr, noErr},
        {0, nullptr, CFSTR("Pen"), noErr},
        {0, nullptr, CFSTR("quill.APP"), noErr},
        {0x7175696C, CFSTR("org.example.Pen"), nullptr, kLSApplicationNotFoundErr},
        {0x74687265, nullptr, nullptr, kLSApplicationNotFoundErr},  // 'thre', too deep
        {0, nullptr, nullptr, paramErr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        const CFIndex before = OSALiveObjectCount();
        FSRef ref{};
        {
            CFRef<CFURLRef> url;
            EXPECT_EQ(
                LSFindApplicationForInfo(row.creator, row.bundleID, row.name, &ref, url.out()),
                row.status);
            EXPECT_EQ(static_cast<bool>(url), row.status == noErr);
        }
        EXPECT_EQ(OSALiveObjectCount(), before);
    }
    OSASetHostFolderRoot(nullptr);
}

}  // namespace
}  // namespace osa::test
