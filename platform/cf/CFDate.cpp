// CFDate and the Gregorian calendar in UTC.
#include <CoreFoundation/CFDate.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "platform/cf/CFRuntime.h"
#include "platform/cf/Calendar.h"
#include "platform/posix/FileSystem.h"

struct __CFDate : osa::CFObject {
    static const osa::ClassRecord kClass;
    explicit __CFDate(CFAbsoluteTime absolute) : CFObject(kClass), time(absolute) {}
    CFAbsoluteTime time;
};

namespace {

constexpr double kSecondsPerDay = 86400;
/// Days from 0000-03-01 to 2001-01-01: the calendar is counted from March, so that leap days come
/// last.
constexpr std::int64_t kDaysToEpoch = 730791;
constexpr std::int64_t kDaysPer400Years = 146097;
/// Keeps the year below 100000000 on both sides.
constexpr double kLastDay = (1e8 - 2002) * 365.2425;

bool equalDates(const osa::CFObject* first, const osa::CFObject* second) {
    return static_cast<const __CFDate*>(first)->time == static_cast<const __CFDate*>(second)->time;
}

CFHashCode hashDate(const osa::CFObject* object) {
    return std::hash<double>{}(static_cast<const __CFDate*>(object)->time + 0.0);
}

std::string describeDate(const osa::CFObject* object) {
    return osa::iso8601(static_cast<const __CFDate*>(object)->time);
}

std::int64_t floorDivide(std::int64_t value, std::int64_t divisor) {
    const std::int64_t quotient = value / divisor;
    return value % divisor < 0 ? quotient - 1 : quotient;
}

/// Days since 2001-01-01.
std::int64_t daysOf(std::int64_t year, unsigned month, unsigned day) {
    if (month <= 2) --year;
    const std::int64_t era = floorDivide(year, 400);
    const std::int64_t yearOfEra = year - era * 400;
    const std::int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * kDaysPer400Years + dayOfEra - kDaysToEpoch;
}

void setDay(CFGregorianDate& date, std::int64_t days) {
    days += kDaysToEpoch;
    const std::int64_t era = floorDivide(days, kDaysPer400Years);
    const std::int64_t dayOfEra = days - era * kDaysPer400Years;
    const std::int64_t yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t marchMonth = (5 * dayOfYear + 2) / 153;
    date.day = static_cast<SInt8>(dayOfYear - (153 * marchMonth + 2) / 5 + 1);
    date.month = static_cast<SInt8>(marchMonth < 10 ? marchMonth + 3 : marchMonth - 9);
    date.year = static_cast<SInt32>(yearOfEra + era * 400 + (date.month <= 2));
}

unsigned daysInMonth(std::int64_t year, unsigned month) {
    const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    if (month == 2) return leap ? 29 : 28;
    return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

/// Takes digits and the character behind them (0: none) from the front.
bool takeField(std::string_view& text, char separator, std::int64_t& value) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end == text.data() + text.size() || *end != separator) return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()) + 1);
    return true;
}

}  // namespace

constinit const osa::ClassRecord __CFDate::kClass{"CFDate", osa::deleteObject<__CFDate>, equalDates,
                                                  hashDate, describeDate};
constinit const CFTimeInterval kCFAbsoluteTimeIntervalSince1970 = 978307200.0;
constinit const CFTimeInterval kCFAbsoluteTimeIntervalSince1904 = 3061152000.0;

namespace osa {

std::string iso8601(CFAbsoluteTime time) {
    const CFGregorianDate date = CFAbsoluteTimeGetGregorianDate(time, nullptr);
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02dZ", date.year, date.month,
                  date.day, date.hour, date.minute, static_cast<int>(date.second));
    return text;
}

std::optional<CFAbsoluteTime> timeOfISO8601(std::string_view text) {
    std::int64_t year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    const bool complete = takeField(text, '-', year) && takeField(text, '-', month) &&
                          takeField(text, 'T', day) && takeField(text, ':', hour) &&
                          takeField(text, ':', minute) && takeField(text, 'Z', second);
    if (!complete || !text.empty()) return std::nullopt;
    if (year < -100000000 || year > 100000000 || month < 1 || month > 12) return std::nullopt;
    if (day < 1 || day > daysInMonth(year, static_cast<unsigned>(month))) return std::nullopt;
    if (hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 60)
        return std::nullopt;
    return CFGregorianDateGetAbsoluteTime(
        {static_cast<SInt32>(year), static_cast<SInt8>(month), static_cast<SInt8>(day),
         static_cast<SInt8>(hour), static_cast<SInt8>(minute), static_cast<double>(second)},
        nullptr);
}

}  // namespace osa

CFTypeID CFDateGetTypeID() {
    return osa::typeIDOf(__CFDate::kClass);
}

CFAbsoluteTime CFAbsoluteTimeGetCurrent() {
    const osa::posix::Time now = osa::posix::now();
    return static_cast<double>(now.seconds) + now.nanoseconds / 1e9 -
           kCFAbsoluteTimeIntervalSince1970;
}

CFDateRef CFDateCreate(CFAllocatorRef, CFAbsoluteTime time) {
    return osa::makeObject<__CFDate>(time);
}

CFAbsoluteTime CFDateGetAbsoluteTime(CFDateRef date) {
    return date == nullptr ? 0 : date->time;
}

CFTimeInterval CFDateGetTimeIntervalSinceDate(CFDateRef date, CFDateRef other) {
    return CFDateGetAbsoluteTime(date) - CFDateGetAbsoluteTime(other);
}

CFComparisonResult CFDateCompare(CFDateRef first, CFDateRef second, void*) {
    const double difference = CFDateGetTimeIntervalSinceDate(first, second);
    return difference < 0   ? kCFCompareLessThan
           : difference > 0 ? kCFCompareGreaterThan
                            : kCFCompareEqualTo;
}

CFGregorianDate CFAbsoluteTimeGetGregorianDate(CFAbsoluteTime time, CFTimeZoneRef) {
    CFGregorianDate date{};
    if (std::isnan(time)) time = 0;
    const double day = std::clamp(std::floor(time / kSecondsPerDay), -kLastDay, kLastDay);
    double second = std::clamp(time - day * kSecondsPerDay, 0.0, std::nextafter(kSecondsPerDay, 0));
    setDay(date, static_cast<std::int64_t>(day));
    date.hour = static_cast<SInt8>(second / 3600);
    second -= date.hour * 3600.0;
    date.minute = static_cast<SInt8>(second / 60);
    date.second = second - date.minute * 60.0;
    return date;
}

CFAbsoluteTime CFGregorianDateGetAbsoluteTime(CFGregorianDate date, CFTimeZoneRef) {
    const std::int64_t days =
        daysOf(date.year, static_cast<unsigned>(date.month), static_cast<unsigned>(date.day));
    return static_cast<double>(days) * kSecondsPerDay + date.hour * 3600.0 + date.minute * 60.0 +
           date.second;
}
