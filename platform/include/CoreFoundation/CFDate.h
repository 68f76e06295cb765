// CFDate: points in time as objects, and the calendar of absolute times.
//
// An absolute time is a count of seconds since 2001-01-01T00:00:00Z, without leap seconds.
#pragma once

#include <CoreFoundation/CFBase.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef double CFTimeInterval;
typedef double CFAbsoluteTime;
typedef const struct __CFDate* CFDateRef;
typedef const struct __CFTimeZone* CFTimeZoneRef;

/// Seconds from 1970 and from 1904 to the start of absolute time.
OSA_PLATFORM_EXPORT extern const CFTimeInterval kCFAbsoluteTimeIntervalSince1970;
OSA_PLATFORM_EXPORT extern const CFTimeInterval kCFAbsoluteTimeIntervalSince1904;

/// The Gregorian calendar, also before it was introduced.
typedef struct CFGregorianDate {
    SInt32 year;
    SInt8 month;  ///< 1 to 12
    SInt8 day;    ///< 1 to 31
    SInt8 hour;
    SInt8 minute;
    double second;
} CFGregorianDate;

OSA_PLATFORM_EXPORT CFTypeID CFDateGetTypeID(void);
OSA_PLATFORM_EXPORT CFAbsoluteTime CFAbsoluteTimeGetCurrent(void);
OSA_PLATFORM_EXPORT CFDateRef CFDateCreate(CFAllocatorRef allocator,
                                           CFAbsoluteTime time) CF_RETURNS_RETAINED;
OSA_PLATFORM_EXPORT CFAbsoluteTime CFDateGetAbsoluteTime(CFDateRef date);
OSA_PLATFORM_EXPORT CFTimeInterval CFDateGetTimeIntervalSinceDate(CFDateRef date, CFDateRef other);
OSA_PLATFORM_EXPORT CFComparisonResult CFDateCompare(CFDateRef first, CFDateRef second,
                                                     void* context);

/// In UTC; `zone` must be null. Times beyond the years -100000000 to 100000000 answer the nearest
/// of these, not-a-number the start of absolute time.
OSA_PLATFORM_EXPORT CFGregorianDate CFAbsoluteTimeGetGregorianDate(CFAbsoluteTime time,
                                                                   CFTimeZoneRef zone);
/// In UTC; `zone` must be null. The fields must be in their ranges.
OSA_PLATFORM_EXPORT CFAbsoluteTime CFGregorianDateGetAbsoluteTime(CFGregorianDate date,
                                                                  CFTimeZoneRef zone);

#ifdef __cplusplus
}
#endif
