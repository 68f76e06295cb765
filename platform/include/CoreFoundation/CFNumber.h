// CFNumber and CFBoolean: numbers and truth values as objects.
#pragma once

#include <CoreFoundation/CFBase.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef const struct __CFNumber* CFNumberRef;
typedef const struct __CFBoolean* CFBooleanRef;

// clang-format off
/// The C type of a value that is passed in or out.
typedef CFIndex CFNumberType;
enum {
    kCFNumberSInt8Type      = 1,
    kCFNumberSInt16Type     = 2,
    kCFNumberSInt32Type     = 3,
    kCFNumberSInt64Type     = 4,
    kCFNumberFloat32Type    = 5,
    kCFNumberFloat64Type    = 6,
    kCFNumberCharType       = 7,
    kCFNumberShortType      = 8,
    kCFNumberIntType        = 9,
    kCFNumberLongType       = 10,       ///< C's long of the host: 64 bits
    kCFNumberLongLongType   = 11,
    kCFNumberFloatType      = 12,
    kCFNumberDoubleType     = 13,
    kCFNumberCFIndexType    = 14,
    kCFNumberNSIntegerType  = 15,
    kCFNumberCGFloatType    = 16,       ///< a double
    kCFNumberMaxType        = 16
};
// clang-format on

OSA_PLATFORM_EXPORT extern const CFBooleanRef kCFBooleanTrue;
OSA_PLATFORM_EXPORT extern const CFBooleanRef kCFBooleanFalse;
OSA_PLATFORM_EXPORT extern const CFNumberRef kCFNumberPositiveInfinity;
OSA_PLATFORM_EXPORT extern const CFNumberRef kCFNumberNegativeInfinity;
OSA_PLATFORM_EXPORT extern const CFNumberRef kCFNumberNaN;

OSA_PLATFORM_EXPORT CFTypeID CFBooleanGetTypeID(void);
OSA_PLATFORM_EXPORT Boolean CFBooleanGetValue(CFBooleanRef boolean);

OSA_PLATFORM_EXPORT CFTypeID CFNumberGetTypeID(void);
/// Copies the value at `value`, which has the given type. Null for an unknown type.
OSA_PLATFORM_EXPORT CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType type,
                                               const void* value) CF_RETURNS_RETAINED;
/// The fixed-width type of the same size and kind as the one at creation.
OSA_PLATFORM_EXPORT CFNumberType CFNumberGetType(CFNumberRef number);
/// Bytes of CFNumberGetType.
OSA_PLATFORM_EXPORT CFIndex CFNumberGetByteSize(CFNumberRef number);
OSA_PLATFORM_EXPORT Boolean CFNumberIsFloatType(CFNumberRef number);
/// Stores the value in the given type. False when that loses something; then the nearest value that
/// the type holds is stored (0 for what is not a number).
OSA_PLATFORM_EXPORT Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);
/// By value, whatever the types. Not-a-number comes after every number and equals itself.
OSA_PLATFORM_EXPORT CFComparisonResult CFNumberCompare(CFNumberRef first, CFNumberRef second,
                                                       void* context);

#ifdef __cplusplus
}
#endif
