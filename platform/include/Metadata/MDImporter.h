// The desktop search's importer interface: identifiers, the interface table and attribute keys.
#pragma once

#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFPlugInCOM.h>
#include <CoreFoundation/CFString.h>

#ifdef __cplusplus
extern "C" {
#endif

// clang-format off
#define kMDImporterTypeID CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, \
    0x8B, 0x08, 0xC4, 0xBF, 0x41, 0x5B, 0x11, 0xD8, 0xB3, 0xF9, 0x00, 0x03, 0x93, 0x67, 0x26, 0xFC)
#define kMDImporterInterfaceID CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, \
    0x6E, 0xBC, 0x27, 0xC4, 0x89, 0x9C, 0x11, 0xD8, 0x84, 0xAE, 0x00, 0x03, 0x93, 0x67, 0x26, 0xFC)
// clang-format on

/// Fills `attributes` with what the file at the POSIX path holds; true when anything was imported.
/// `contentTypeUTI` is the service's idea of the file's type.
typedef struct MDImporterInterfaceStruct {
    IUNKNOWN_C_GUTS;
    Boolean (*ImporterImportData)(void* thisInterface, CFMutableDictionaryRef attributes,
                                  CFStringRef contentTypeUTI, CFStringRef pathToFile);
} MDImporterInterfaceStruct;

// Attribute keys; each is the string of its own name.
OSA_PLATFORM_EXPORT extern const CFStringRef kMDItemDescription;
OSA_PLATFORM_EXPORT extern const CFStringRef kMDItemTextContent;

#ifdef __cplusplus
}
#endif
