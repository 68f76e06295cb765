// Launch Services: what an item is to a person.
#pragma once

#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>
#include <CoreServices/Files.h>

#ifdef __cplusplus
extern "C" {
#endif

// clang-format off
typedef OptionBits LSRequestedInfo;
enum { kLSRequestAllInfo = 0xFFFFFFFF };

typedef OptionBits LSItemInfoFlags;
enum {
    kLSItemInfoIsPlainFile     = 0x00000001,  ///< no folder
    kLSItemInfoIsPackage       = 0x00000002,  ///< a folder that people see as one document or program
    kLSItemInfoIsApplication   = 0x00000004,
    kLSItemInfoIsContainer     = 0x00000008,  ///< a folder, packages included
    kLSItemInfoIsAliasFile     = 0x00000010,
    kLSItemInfoIsSymlink       = 0x00000020
};
// clang-format on

typedef struct LSItemInfoRecord {
    LSItemInfoFlags flags;
    OSType filetype;
    OSType creator;
    CFStringRef extension;     ///< the caller releases it; null when there is none
    CFStringRef iconFileName;  ///< always null here
    UInt32 kindID;             ///< always 0 here
} LSItemInfoRecord;

/// Fills `info` with all it knows, whatever is requested. fnfErr when the item is not there.
OSA_PLATFORM_EXPORT OSStatus LSCopyItemInfoForURL(CFURLRef url, LSRequestedInfo requested,
                                                  LSItemInfoRecord* info);
/// The name as people see it, without the extension of an application bundle; the caller releases
/// it.
OSA_PLATFORM_EXPORT OSStatus LSCopyDisplayNameForRef(const FSRef* ref, CFStringRef* name);

/// Searches the user's and then the machine's Applications folder, and the folders in them, for an
/// application that meets every criterion given: its creator (0: any), its bundle identifier (any
/// case; null: any), its file name with or without ".app" (null: any). The caller releases the URL;
/// `ref` and `url` may be null. kLSApplicationNotFoundErr when there is none, paramErr when no
/// criterion is given.
OSA_PLATFORM_EXPORT OSStatus LSFindApplicationForInfo(OSType creator, CFStringRef bundleID,
                                                      CFStringRef name, FSRef* ref, CFURLRef* url);

#ifdef __cplusplus
}
#endif
