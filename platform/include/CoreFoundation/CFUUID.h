// CFUUID: universally unique identifiers. Equal identifiers need not be one object, except those
// made by CFUUIDGetConstantUUIDWithBytes.
#pragma once

#include <CoreFoundation/CFBase.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef const struct __CFUUID* CFUUIDRef;

/// The 16 bytes in the order of the written form. Passed by value.
typedef struct CFUUIDBytes {
    UInt8 byte0, byte1, byte2, byte3, byte4, byte5, byte6, byte7;
    UInt8 byte8, byte9, byte10, byte11, byte12, byte13, byte14, byte15;
} CFUUIDBytes;

OSA_PLATFORM_EXPORT CFTypeID CFUUIDGetTypeID(void);
/// A new random identifier.
OSA_PLATFORM_EXPORT CFUUIDRef CFUUIDCreate(CFAllocatorRef allocator) CF_RETURNS_RETAINED;
OSA_PLATFORM_EXPORT CFUUIDRef CFUUIDCreateFromUUIDBytes(CFAllocatorRef allocator,
                                                        CFUUIDBytes bytes) CF_RETURNS_RETAINED;
/// From "68753A44-4D6F-1226-9C60-0050E4C00067" in either case; null for anything else.
OSA_PLATFORM_EXPORT CFUUIDRef CFUUIDCreateFromString(CFAllocatorRef allocator,
                                                     CFStringRef string) CF_RETURNS_RETAINED;
/// The written form in capitals.
OSA_PLATFORM_EXPORT CFStringRef CFUUIDCreateString(CFAllocatorRef allocator,
                                                   CFUUIDRef uuid) CF_RETURNS_RETAINED;
/// The one object of these bytes, which lives as long as the process and needs no release.
OSA_PLATFORM_EXPORT CFUUIDRef CFUUIDGetConstantUUIDWithBytes(
    CFAllocatorRef allocator, UInt8 byte0, UInt8 byte1, UInt8 byte2, UInt8 byte3, UInt8 byte4,
    UInt8 byte5, UInt8 byte6, UInt8 byte7, UInt8 byte8, UInt8 byte9, UInt8 byte10, UInt8 byte11,
    UInt8 byte12, UInt8 byte13, UInt8 byte14, UInt8 byte15);
OSA_PLATFORM_EXPORT CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef uuid);

#ifdef __cplusplus
}
#endif
