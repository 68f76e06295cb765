// The process list.
#include <CoreFoundation/CFRef.h>
#include <CoreFoundation/CFString.h>
#include <CoreServices/MacErrors.h>
#include <CoreServices/Processes.h>
#include <gtest/gtest.h>

#include <filesystem>

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

}  // namespace
}  // namespace osa::test
