// The process list, and the kernel's texts that it is read from.
#include <CoreFoundation/CFString.h>
#include <CoreServices/Processes.h>

#include "platform/posix/processes/ProcessTexts.h"
#include "platform/services/processes/ProcessApplication.h"
#include "tests/support/Test.h"

namespace osa::test {
namespace {

TEST(Processes, TheWalkMeetsTheCallerOnceAndEnds) {
    ProcessSerialNumber own;
    ASSERT_EQ(GetCurrentProcess(&own), noErr);
    ProcessSerialNumber number{0, kNoProcess};
    int met = 0;
    while (GetNextProcess(&number) == noErr) {
        Boolean same = false;
        const ProcessSerialNumber current{0, kCurrentProcess};
        EXPECT_EQ(SameProcess(&number, &current, &same), noErr);
        EXPECT_EQ(same != 0, number.lowLongOfPSN == own.lowLongOfPSN);
        met += same;
    }
    EXPECT_EQ(met, 1);
    EXPECT_EQ(number.highLongOfPSN + number.lowLongOfPSN, 0U);
    for (const UInt32 low : {UInt32{kSystemProcess}, own.lowLongOfPSN}) {
        number = {0, low};
        EXPECT_EQ(GetNextProcess(&number), procNotFound) << low;
    }

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
    EXPECT_TRUE(fs::equivalent(pathOf(place), "/proc/self/exe"));
    const auto dictionary = CFRef<CFDictionaryRef>::Adopt(
        ProcessInformationCopyDictionary(&own, kProcessDictionaryIncludeAllInformationMask));
    ASSERT_TRUE(dictionary);
    EXPECT_TRUE(CFDictionaryContainsKey(dictionary.get(), CFSTR("BundlePath")));
}

TEST(Processes, AreToldByTextsInWhichNamesHoldAnything) {
    const std::string fields =
        " S 4 1 1 0 -1 4194560 9 0 0 0 20 30 0 0 20 0 1 0 70000000000 4096 3 18446744073709551615";
    for (const char* const name : {"a", "", ") S 9 9 (", "a\nb )", "(((", "))) R 1"}) {
        const auto facts = posix::factsFromStat("77 (" + std::string(name) + ")" + fields);
        ASSERT_TRUE(facts && facts->id == 77 && facts->parent == 4) << name;
        EXPECT_TRUE(facts->processorTime == 50 && facts->started == 70000000000) << name;
        EXPECT_EQ(facts->residentBytes % 3, 0U);
    }
    const std::string cut = ("77 (a)" + fields).substr(0, 6 + fields.find(" 3 18"));
    for (std::size_t length = 0; length < cut.size(); ++length) {
        EXPECT_FALSE(posix::factsFromStat(cut.substr(0, length))) << length;
    }
    for (const char* const row : {"AB2", "B", "A1", "C", "1"}) {
        const std::string_view name(row, row[1] == 'B' ? 2 : 1);
        EXPECT_EQ(posix::variableIn({"A=1\0AB=2\0=\0B\0B=\0B=3", 20}, name), row + name.size());
    }
    const std::string user = "/user.slice/user-7.slice/user@7.service";
    const std::tuple<std::string, std::string, std::vector<std::string>> rows[] = {
        {"1:name=systemd:/\n0::" + user + "/app.slice/app-gnome-org.a.B-12.scope\n",
         "app-gnome-org.a.B-12.scope",
         {"org.a.B", "gnome-org.a.B"}},
        {"0::" + user + "/app.slice/app-a\\x2db\\x2-x.scope/tab-1.scope/deep", "tab-1.scope", {}},
        {"0::/\n3:cpu:/x.scope\n1:name=systemd:" + user + "/app-a\\x2db\\x2@x.service",
         "app-a\\x2db\\x2@x.service",
         {"a-b\\x2"}},
        {"0::" + user + "/_app-firefox-esr.service",
         "app-firefox-esr.service",
         {"esr", "firefox-esr"}},
        {"0::" + user + "/app-.scope", "app-.scope", {}},
        {"0::" + user, "", {}},
        {"0::/user.slice/session-2.scope\n::\n", "", {}},
    };
    for (const auto& [groups, unit, entries] : rows) {
        EXPECT_EQ(posix::unitFromControlGroups(groups), unit) << groups;
        EXPECT_EQ(entriesOfUnit(unit), entries) << unit;
    }
}

}  // namespace
}  // namespace osa::test
