// CFNumber, CFBoolean, CFDate and CFUUID.
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFUUID.h>

#include <cmath>
#include <limits>

#include "platform/cf/Calendar.h"
#include "platform/cf/NumberObject.h"
#include "tests/platform/cf/CFTestSupport.h"

namespace {

class CFScalarsTest : public CFTest {};

using NumberRef = CFRef<CFNumberRef>;

TEST_F(CFScalarsTest, NumbersSayWhenATypeDoesNotHoldThem) {
    const std::tuple<const char*, double, SInt32, bool> rows[] = {
        {"whole", -5, -5, true},
        {"fraction is cut", 2.75, 2, false},
        {"largest", 2147483647, INT32_MAX, true},
        {"one more", 2147483648.0, INT32_MAX, false},
        {"smallest", -2147483648.0, INT32_MIN, true},
        {"far below", -1e300, INT32_MIN, false},
        {"not a number", NAN, 0, false},
    };
    for (const auto& [name, value, wantedStored, exact] : rows) {
        SCOPED_TRACE(name);
        const auto number = NumberRef::Adopt(osa::createReal(value));
        SInt32 stored = 42;
        EXPECT_EQ(CFNumberGetValue(number.get(), kCFNumberSInt32Type, &stored), exact);
        EXPECT_EQ(stored, wantedStored);
    }
    const auto huge = NumberRef::Adopt(osa::createUnsigned(UINT64_MAX));
    SInt64 stored = 0;
    EXPECT_FALSE(CFNumberGetValue(huge.get(), kCFNumberSInt64Type, &stored));
    EXPECT_EQ(stored, INT64_MAX);
    EXPECT_EQ(description(huge.get()), "18446744073709551615");
    const short narrow = -2;
    const auto small = NumberRef::Adopt(CFNumberCreate(nullptr, kCFNumberShortType, &narrow));
    EXPECT_EQ(CFNumberGetType(small.get()), kCFNumberSInt16Type);
    EXPECT_EQ(CFNumberGetByteSize(small.get()), 2);
}

TEST_F(CFScalarsTest, NumbersAreOrderedByValueAcrossTypes) {
    const NumberRef ascending[] = {
        NumberRef::Retain(kCFNumberNegativeInfinity),
        NumberRef::Adopt(osa::createInteger(INT64_MIN)),
        NumberRef::Adopt(osa::createReal(-0.5)),
        NumberRef::Adopt(osa::createInteger(0)),
        NumberRef::Adopt(osa::createReal(0.5)),
        NumberRef::Adopt(osa::createInteger(INT64_MAX)),
        NumberRef::Adopt(osa::createReal(0x1p63)),
        NumberRef::Adopt(osa::createUnsigned((UINT64_C(1) << 63) + 1)),
        NumberRef::Adopt(osa::createUnsigned(UINT64_MAX)),
        NumberRef::Adopt(osa::createReal(0x1p64)),
        NumberRef::Retain(kCFNumberPositiveInfinity),
        NumberRef::Retain(kCFNumberNaN),
    };
    for (std::size_t i = 0; i < std::size(ascending); ++i) {
        for (std::size_t j = 0; j < std::size(ascending); ++j) {
            SCOPED_TRACE(description(ascending[i].get()) + " and " +
                         description(ascending[j].get()));
            const int expected = i < j ? -1 : i > j ? 1 : 0;
            EXPECT_EQ(CFNumberCompare(ascending[i].get(), ascending[j].get(), nullptr), expected);
        }
    }
    const auto whole = NumberRef::Adopt(osa::createReal(5));
    const auto integer = NumberRef::Adopt(osa::createInteger(5));
    EXPECT_TRUE(CFEqual(whole.get(), integer.get()));
    EXPECT_EQ(CFHash(whole.get()), CFHash(integer.get()));
    EXPECT_FALSE(CFEqual(integer.get(), kCFBooleanTrue));
}

TEST_F(CFScalarsTest, DatesFollowTheCalendar) {
    const std::tuple<const char*, CFAbsoluteTime> rows[] = {
        {"2001-01-01T00:00:00Z", 0},
        {"1904-01-01T00:00:00Z", -3061152000},
        {"2000-12-31T23:59:59Z", -1},
        {"0001-01-01T00:00:00Z", -63113904000},
    };
    for (const auto& [text, time] : rows) {
        SCOPED_TRACE(text);
        EXPECT_EQ(osa::iso8601(time), text);
        EXPECT_EQ(osa::timeOfISO8601(text), time);
        EXPECT_EQ(osa::iso8601(time + 0.999), text) << "seconds are not rounded up";
    }
    for (const char* bad : {"", "2001-02-29T00:00:00Z", "2001-13-01T00:00:00Z", "2001-01-01",
                            "2001-01-01T24:00:00Z", "2001-01-01T00:00:00", "2001-01-01T00:00:00Zx"})
        EXPECT_FALSE(osa::timeOfISO8601(bad)) << bad;
    for (const double wild :
         {1e300, -1e300, std::numeric_limits<double>::infinity(), std::nan("")}) {
        const CFGregorianDate date = CFAbsoluteTimeGetGregorianDate(wild, nullptr);
        EXPECT_TRUE(date.month >= 1 && date.month <= 12 && date.second < 60) << wild;
    }
}

TEST_F(CFScalarsTest, UUIDs) {
    const auto parsed = [](const char* text) {
        return CFRef<CFUUIDRef>::Adopt(CFUUIDCreateFromString(nullptr, makeString(text).get()));
    };
    const auto uuid = parsed("8b08c4bf-415B-11d8-B3F9-0003936726fc");
    EXPECT_EQ(CFUUIDGetUUIDBytes(uuid.get()).byte15, 0xFC);
    EXPECT_EQ(taken(CFUUIDCreateString(nullptr, uuid.get())),
              "8B08C4BF-415B-11D8-B3F9-0003936726FC");
    const auto constant = [] {
        return CFUUIDGetConstantUUIDWithBytes(nullptr, 0x8B, 0x08, 0xC4, 0xBF, 0x41, 0x5B, 0x11,
                                              0xD8, 0xB3, 0xF9, 0x00, 0x03, 0x93, 0x67, 0x26, 0xFC);
    };
    EXPECT_TRUE(CFEqual(uuid.get(), constant()));
    EXPECT_EQ(constant(), constant());
    for (const char* bad :
         {"", "8B08C4BF-415B-11D8-B3F9-0003936726F", "8B08C4BF0415B-11D8-B3F9-0003936726FC",
          "8B08C4BG-415B-11D8-B3F9-0003936726FC"})
        EXPECT_FALSE(parsed(bad)) << bad;
    const auto first = CFRef<CFUUIDRef>::Adopt(CFUUIDCreate(nullptr));
    const auto second = CFRef<CFUUIDRef>::Adopt(CFUUIDCreate(nullptr));
    EXPECT_FALSE(CFEqual(first.get(), second.get()));
}

}  // namespace
