// Property lists: trees of strings, numbers, Booleans, dates, data, arrays and dictionaries, read
// from and written to bytes.
//
// Three forms are read: XML, binary, and the old-style text form with its relative, the ".strings"
// table. Nesting deeper than 512 levels, more than 1 000 000 values (counted as often as they are
// referred to) and binary lists that contain themselves are refused. Nothing outside the bytes is
// ever fetched.
#pragma once

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFData.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef CFTypeRef CFPropertyListRef;
typedef struct __CFError* CFErrorRef;

// clang-format off
typedef CFIndex CFPropertyListFormat;
enum {
    kCFPropertyListOpenStepFormat    = 1,       ///< old style; read only
    kCFPropertyListXMLFormat_v1_0    = 100,
    kCFPropertyListBinaryFormat_v1_0 = 200
};

/// What of the tree may be changed later.
typedef CFOptionFlags CFPropertyListMutabilityOptions;
enum {
    kCFPropertyListImmutable                  = 0,
    kCFPropertyListMutableContainers          = 1,
    kCFPropertyListMutableContainersAndLeaves = 2
};
// clang-format on

/// Reads a list in any form. Null when the bytes are none; `error` (may be null) is then set to
/// null too, since there are no error objects. `format` (may be null) receives the form. UIDs of
/// keyed archives become dictionaries of one entry, "CF$UID". Text of nothing but blanks and
/// comments is an empty dictionary; no bytes at all are no list.
OSA_PLATFORM_EXPORT CFPropertyListRef CFPropertyListCreateWithData(
    CFAllocatorRef allocator, CFDataRef data, CFPropertyListMutabilityOptions options,
    CFPropertyListFormat* format, CFErrorRef* error) CF_RETURNS_RETAINED;
/// The same under its older name; `errorString` (may be null) receives a text that the caller
/// releases.
OSA_PLATFORM_EXPORT CFPropertyListRef CFPropertyListCreateFromXMLData(
    CFAllocatorRef allocator, CFDataRef data, CFPropertyListMutabilityOptions options,
    CFStringRef* errorString) CF_RETURNS_RETAINED;
/// Writes a list as XML or binary. Null when a value is of another type, a dictionary has a key
/// that is no string, the nesting is deeper than 512 levels, or the form is not written.
OSA_PLATFORM_EXPORT CFDataRef CFPropertyListCreateData(CFAllocatorRef allocator,
                                                       CFPropertyListRef list,
                                                       CFPropertyListFormat format,
                                                       CFOptionFlags options,
                                                       CFErrorRef* error) CF_RETURNS_RETAINED;
OSA_PLATFORM_EXPORT CFDataRef
CFPropertyListCreateXMLData(CFAllocatorRef allocator, CFPropertyListRef list) CF_RETURNS_RETAINED;
/// A copy of the whole tree; null as for writing.
OSA_PLATFORM_EXPORT CFPropertyListRef
CFPropertyListCreateDeepCopy(CFAllocatorRef allocator, CFPropertyListRef list,
                             CFPropertyListMutabilityOptions options) CF_RETURNS_RETAINED;
/// Whether the list could be written in the form.
OSA_PLATFORM_EXPORT Boolean CFPropertyListIsValid(CFPropertyListRef list,
                                                  CFPropertyListFormat format);

#ifdef __cplusplus
}
#endif
