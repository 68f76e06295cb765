// CFDictionary: values by key, immutable or mutable.
//
// Keys and values are handled by callbacks as in CFArray. Unlike other hash tables this one keeps
// the order in which keys were first set, and every enumeration follows it. A key object must not
// change while it is in a dictionary.
#pragma once

#include <CoreFoundation/CFBase.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef const struct __CFDictionary* CFDictionaryRef;
typedef struct __CFDictionary* CFMutableDictionaryRef;

/// Each may be null: nothing is done, or pointers are compared and hashed.
typedef struct CFDictionaryKeyCallBacks {
    CFIndex version;                                                     ///< 0
    const void* (*retain)(CFAllocatorRef allocator, const void* value);  ///< answers what is kept
    void (*release)(CFAllocatorRef allocator, const void* value);
    CFStringRef (*copyDescription)(const void* value);
    Boolean (*equal)(const void* first, const void* second);
    CFHashCode (*hash)(const void* value);
} CFDictionaryKeyCallBacks;

typedef struct CFDictionaryValueCallBacks {
    CFIndex version;  ///< 0
    const void* (*retain)(CFAllocatorRef allocator, const void* value);
    void (*release)(CFAllocatorRef allocator, const void* value);
    CFStringRef (*copyDescription)(const void* value);
    Boolean (*equal)(const void* first, const void* second);
} CFDictionaryValueCallBacks;

/// For keys that are Core Foundation objects.
OSA_PLATFORM_EXPORT extern const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
/// The same, for strings: the dictionary keeps an immutable copy of the key.
OSA_PLATFORM_EXPORT extern const CFDictionaryKeyCallBacks kCFCopyStringDictionaryKeyCallBacks;
/// For values that are Core Foundation objects.
OSA_PLATFORM_EXPORT extern const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;

typedef void (*CFDictionaryApplierFunction)(const void* key, const void* value, void* context);

OSA_PLATFORM_EXPORT CFTypeID CFDictionaryGetTypeID(void);

/// Of equal keys the first one stays, with the last one's value.
OSA_PLATFORM_EXPORT CFDictionaryRef
CFDictionaryCreate(CFAllocatorRef allocator, const void** keys, const void** values, CFIndex count,
                   const CFDictionaryKeyCallBacks* keyCallBacks,
                   const CFDictionaryValueCallBacks* valueCallBacks) CF_RETURNS_RETAINED;
OSA_PLATFORM_EXPORT CFDictionaryRef
CFDictionaryCreateCopy(CFAllocatorRef allocator, CFDictionaryRef dictionary) CF_RETURNS_RETAINED;
/// Empty. `capacity` is a hint; 0 says nothing.
OSA_PLATFORM_EXPORT CFMutableDictionaryRef CFDictionaryCreateMutable(
    CFAllocatorRef allocator, CFIndex capacity, const CFDictionaryKeyCallBacks* keyCallBacks,
    const CFDictionaryValueCallBacks* valueCallBacks) CF_RETURNS_RETAINED;
OSA_PLATFORM_EXPORT CFMutableDictionaryRef CFDictionaryCreateMutableCopy(
    CFAllocatorRef allocator, CFIndex capacity, CFDictionaryRef dictionary) CF_RETURNS_RETAINED;

OSA_PLATFORM_EXPORT CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary);
OSA_PLATFORM_EXPORT Boolean CFDictionaryContainsKey(CFDictionaryRef dictionary, const void* key);
/// Borrowed; null when there is no such key.
OSA_PLATFORM_EXPORT const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key);
/// Whether there is such a key; its value goes to `value`, which may be null.
OSA_PLATFORM_EXPORT Boolean CFDictionaryGetValueIfPresent(CFDictionaryRef dictionary,
                                                          const void* key, const void** value);
/// All borrowed keys and values in parallel arrays of CFDictionaryGetCount places; either may be
/// null.
OSA_PLATFORM_EXPORT void CFDictionaryGetKeysAndValues(CFDictionaryRef dictionary, const void** keys,
                                                      const void** values);
OSA_PLATFORM_EXPORT void CFDictionaryApplyFunction(CFDictionaryRef dictionary,
                                                   CFDictionaryApplierFunction applier,
                                                   void* context);

/// Sets the value of a key, new or not.
OSA_PLATFORM_EXPORT void CFDictionarySetValue(CFMutableDictionaryRef dictionary, const void* key,
                                              const void* value);
/// Only when the key is new.
OSA_PLATFORM_EXPORT void CFDictionaryAddValue(CFMutableDictionaryRef dictionary, const void* key,
                                              const void* value);
/// Only when the key is there.
OSA_PLATFORM_EXPORT void CFDictionaryReplaceValue(CFMutableDictionaryRef dictionary,
                                                  const void* key, const void* value);
OSA_PLATFORM_EXPORT void CFDictionaryRemoveValue(CFMutableDictionaryRef dictionary,
                                                 const void* key);
OSA_PLATFORM_EXPORT void CFDictionaryRemoveAllValues(CFMutableDictionaryRef dictionary);

#ifdef __cplusplus
}
#endif
