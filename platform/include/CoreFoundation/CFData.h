// CFData: runs of bytes, immutable or mutable. Lengths and ranges count bytes.
#pragma once

#include <CoreFoundation/CFBase.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef const struct __CFData* CFDataRef;
typedef struct __CFData* CFMutableDataRef;

OSA_PLATFORM_EXPORT CFTypeID CFDataGetTypeID(void);

/// Copies `length` bytes. Null when memory fails or `length` is negative.
OSA_PLATFORM_EXPORT CFDataRef CFDataCreate(CFAllocatorRef allocator, const UInt8* bytes,
                                           CFIndex length) CF_RETURNS_RETAINED;
/// An immutable object with the same bytes; the same object when it is immutable already.
OSA_PLATFORM_EXPORT CFDataRef CFDataCreateCopy(CFAllocatorRef allocator,
                                               CFDataRef data) CF_RETURNS_RETAINED;
/// Empty. `capacity` is a hint; 0 says nothing.
OSA_PLATFORM_EXPORT CFMutableDataRef CFDataCreateMutable(CFAllocatorRef allocator,
                                                         CFIndex capacity) CF_RETURNS_RETAINED;
OSA_PLATFORM_EXPORT CFMutableDataRef CFDataCreateMutableCopy(CFAllocatorRef allocator,
                                                             CFIndex capacity,
                                                             CFDataRef data) CF_RETURNS_RETAINED;

OSA_PLATFORM_EXPORT CFIndex CFDataGetLength(CFDataRef data);
/// Borrowed while the object lives unchanged; never null for a live object, even an empty one.
OSA_PLATFORM_EXPORT const UInt8* CFDataGetBytePtr(CFDataRef data);
/// Copies `range`, which must lie inside the data, to `buffer`.
OSA_PLATFORM_EXPORT void CFDataGetBytes(CFDataRef data, CFRange range, UInt8* buffer);

/// As CFDataGetBytePtr, for writing.
OSA_PLATFORM_EXPORT UInt8* CFDataGetMutableBytePtr(CFMutableDataRef data);
/// Cuts, or lengthens with zeros.
OSA_PLATFORM_EXPORT void CFDataSetLength(CFMutableDataRef data, CFIndex length);
OSA_PLATFORM_EXPORT void CFDataAppendBytes(CFMutableDataRef data, const UInt8* bytes,
                                           CFIndex length);
OSA_PLATFORM_EXPORT void CFDataReplaceBytes(CFMutableDataRef data, CFRange range,
                                            const UInt8* bytes, CFIndex length);
OSA_PLATFORM_EXPORT void CFDataDeleteBytes(CFMutableDataRef data, CFRange range);

#ifdef __cplusplus
}
#endif
