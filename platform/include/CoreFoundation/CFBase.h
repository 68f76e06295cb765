// Core Foundation's base: the scalar types, the polymorphic object functions and the export macro
// that every header below platform/include uses.
//
// Ownership rule of all of Core Foundation: a function with Create or Copy in its name returns a
// reference that the caller releases with CFRelease; a function with Get in its name returns a
// borrowed one that lives as long as the object it was asked of.
#pragma once

#include <stddef.h>
#include <stdint.h>

#define OSA_PLATFORM_EXPORT __attribute__((visibility("default")))

#ifdef __clang_analyzer__
#define CF_RETURNS_RETAINED __attribute__((cf_returns_retained))
#define CF_RETURNS_NOT_RETAINED __attribute__((cf_returns_not_retained))
#define CF_CONSUMED __attribute__((cf_consumed))
#else
#define CF_RETURNS_RETAINED
#define CF_RETURNS_NOT_RETAINED
#define CF_CONSUMED
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef unsigned char Boolean;
typedef uint8_t UInt8;
typedef int8_t SInt8;
typedef uint16_t UInt16;
typedef int16_t SInt16;
typedef uint32_t UInt32;
typedef int32_t SInt32;
typedef uint64_t UInt64;
typedef int64_t SInt64;

/// A UTF-16 code unit in host order.
typedef UInt16 UniChar;
typedef unsigned long UniCharCount;
/// First character in the most significant byte, whatever the host's byte order.
typedef UInt32 FourCharCode;
typedef FourCharCode OSType;
typedef FourCharCode ResType;
/// 16-bit status of the classic managers; widened to OSStatus before it is thrown or compared.
typedef SInt16 OSErr;
/// Signed 32-bit status; 0 is success.
typedef SInt32 OSStatus;

/// Pointer-sized signed count, index or length. Units are stated by each function.
typedef long CFIndex;
typedef unsigned long CFTypeID;
typedef unsigned long CFHashCode;
typedef unsigned long CFOptionFlags;

/// Any Core Foundation object.
typedef const void* CFTypeRef;
typedef const struct __CFAllocator* CFAllocatorRef;
typedef const struct __CFString* CFStringRef;
typedef struct __CFString* CFMutableStringRef;

/// Half-open run of `length` units from `location`.
typedef struct CFRange {
    CFIndex location;
    CFIndex length;
} CFRange;

static inline CFRange CFRangeMake(CFIndex location, CFIndex length) {
    CFRange range;
    range.location = location;
    range.length = length;
    return range;
}

typedef enum CFComparisonResult {
    kCFCompareLessThan = -1,
    kCFCompareEqualTo = 0,
    kCFCompareGreaterThan = 1
} CFComparisonResult;

enum { kCFNotFound = -1 };

/// The only allocator: allocator arguments are accepted and not used.
#define kCFAllocatorDefault ((CFAllocatorRef)0)

/// Adds one to the count and returns `object`. Null is an error of the caller: reported in debug
/// builds, ignored otherwise. Counts are atomic.
OSA_PLATFORM_EXPORT CFTypeRef CFRetain(CFTypeRef object);
/// Takes one from the count; the object goes when it reaches 0. Null as for CFRetain.
OSA_PLATFORM_EXPORT void CFRelease(CFTypeRef object);
/// The count as it is now; constant objects answer a large number.
OSA_PLATFORM_EXPORT CFIndex CFGetRetainCount(CFTypeRef object);
OSA_PLATFORM_EXPORT CFTypeID CFGetTypeID(CFTypeRef object);
/// Same type and equal by that type's own rule. Null equals only null.
OSA_PLATFORM_EXPORT Boolean CFEqual(CFTypeRef first, CFTypeRef second);
/// Equal objects have equal hashes.
OSA_PLATFORM_EXPORT CFHashCode CFHash(CFTypeRef object);
/// A text for people and for logs; its form is no contract. The caller releases it.
OSA_PLATFORM_EXPORT CFStringRef CFCopyDescription(CFTypeRef object) CF_RETURNS_RETAINED;
/// A text for people naming the type, for example "CFString". The caller releases it.
OSA_PLATFORM_EXPORT CFStringRef CFCopyTypeIDDescription(CFTypeID typeID) CF_RETURNS_RETAINED;

/// The one object that stands for no value inside containers, which hold no null pointers.
typedef const struct __CFNull* CFNullRef;
OSA_PLATFORM_EXPORT extern const CFNullRef kCFNull;
OSA_PLATFORM_EXPORT CFTypeID CFNullGetTypeID(void);

#ifdef __cplusplus
}
#endif
