// CFArray: ordered values, immutable or mutable.
//
// What is done with the values is told by callbacks at creation: with kCFTypeArrayCallBacks they
// are Core Foundation objects that the array retains; with null they are bare pointers compared as
// such. Indexes must lie inside the array.
#pragma once

#include <CoreFoundation/CFBase.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef const struct __CFArray* CFArrayRef;
typedef struct __CFArray* CFMutableArrayRef;

/// Each may be null: nothing is done, or pointers are compared.
typedef struct CFArrayCallBacks {
    CFIndex version;                                                     ///< 0
    const void* (*retain)(CFAllocatorRef allocator, const void* value);  ///< answers what is kept
    void (*release)(CFAllocatorRef allocator, const void* value);
    CFStringRef (*copyDescription)(const void* value);
    Boolean (*equal)(const void* first, const void* second);
} CFArrayCallBacks;
/// For values that are Core Foundation objects.
OSA_PLATFORM_EXPORT extern const CFArrayCallBacks kCFTypeArrayCallBacks;

typedef void (*CFArrayApplierFunction)(const void* value, void* context);
typedef CFComparisonResult (*CFComparatorFunction)(const void* first, const void* second,
                                                   void* context);

OSA_PLATFORM_EXPORT CFTypeID CFArrayGetTypeID(void);

OSA_PLATFORM_EXPORT CFArrayRef CFArrayCreate(CFAllocatorRef allocator, const void** values,
                                             CFIndex count,
                                             const CFArrayCallBacks* callBacks) CF_RETURNS_RETAINED;
OSA_PLATFORM_EXPORT CFArrayRef CFArrayCreateCopy(CFAllocatorRef allocator,
                                                 CFArrayRef array) CF_RETURNS_RETAINED;
/// Empty. `capacity` is a hint; 0 says nothing.
OSA_PLATFORM_EXPORT CFMutableArrayRef
CFArrayCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                     const CFArrayCallBacks* callBacks) CF_RETURNS_RETAINED;
OSA_PLATFORM_EXPORT CFMutableArrayRef CFArrayCreateMutableCopy(
    CFAllocatorRef allocator, CFIndex capacity, CFArrayRef array) CF_RETURNS_RETAINED;

OSA_PLATFORM_EXPORT CFIndex CFArrayGetCount(CFArrayRef array);
/// Borrowed; null outside the array.
OSA_PLATFORM_EXPORT const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index);
/// Copies the borrowed values of `range` to `values`.
OSA_PLATFORM_EXPORT void CFArrayGetValues(CFArrayRef array, CFRange range, const void** values);
OSA_PLATFORM_EXPORT Boolean CFArrayContainsValue(CFArrayRef array, CFRange range,
                                                 const void* value);
/// kCFNotFound when no value of `range` equals `value`.
OSA_PLATFORM_EXPORT CFIndex CFArrayGetFirstIndexOfValue(CFArrayRef array, CFRange range,
                                                        const void* value);
OSA_PLATFORM_EXPORT void CFArrayApplyFunction(CFArrayRef array, CFRange range,
                                              CFArrayApplierFunction applier, void* context);

OSA_PLATFORM_EXPORT void CFArrayAppendValue(CFMutableArrayRef array, const void* value);
OSA_PLATFORM_EXPORT void CFArrayAppendArray(CFMutableArrayRef array, CFArrayRef other,
                                            CFRange range);
OSA_PLATFORM_EXPORT void CFArrayInsertValueAtIndex(CFMutableArrayRef array, CFIndex index,
                                                   const void* value);
OSA_PLATFORM_EXPORT void CFArraySetValueAtIndex(CFMutableArrayRef array, CFIndex index,
                                                const void* value);
OSA_PLATFORM_EXPORT void CFArrayRemoveValueAtIndex(CFMutableArrayRef array, CFIndex index);
OSA_PLATFORM_EXPORT void CFArrayRemoveAllValues(CFMutableArrayRef array);
/// Stable.
OSA_PLATFORM_EXPORT void CFArraySortValues(CFMutableArrayRef array, CFRange range,
                                           CFComparatorFunction comparator, void* context);

#ifdef __cplusplus
}
#endif
