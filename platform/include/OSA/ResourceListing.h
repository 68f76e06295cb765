// All resources of one file, wherever they are kept: for tools that list and extract, without
// opening the file for the Resource Manager.
#pragma once

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFData.h>
#include <CoreServices/MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

/// An open list. It may be used from any thread, one at a time.
typedef struct OSAResourceList* OSAResourceListRef;

typedef struct OSAResourceInfo {
    ResType type;
    SInt16 id;
    UInt8 attributes;    ///< as stored; the lowest bit marks compressed resources
    Boolean hasName;     ///< an empty name is a name
    Boolean compressed;  ///< the data carries the signature of compressed data
    OSStatus status;     ///< 0, or why the data cannot be found: both sizes are then 0
    UInt32 storedSize;   ///< bytes in the file
    UInt32 size;         ///< bytes once expanded
    Str255 name;         ///< Mac Roman
} OSAResourceInfo;

/// Opens the resources of the file at `path` (bytes as the kernel takes them): those of its
/// resource fork if it has one that is not empty, else those in the file itself when that is
/// AppleDouble, AppleSingle, MacBinary or a bare resource fork. `*list` is the caller's to close,
/// null on failure: fnfErr and the like, eofErr no resources anywhere, mapReadErr a fork that is no
/// resource map.
OSA_PLATFORM_EXPORT OSStatus OSAResourceListOpen(const char* path, OSAResourceListRef* list);
/// Null is ignored.
OSA_PLATFORM_EXPORT void OSAResourceListClose(OSAResourceListRef list);

OSA_PLATFORM_EXPORT CFIndex OSAResourceListGetCount(OSAResourceListRef list);
/// `index` counts from 0, by type, within a type in the order of the map. paramErr out of range.
OSA_PLATFORM_EXPORT OSStatus OSAResourceListGetInfo(OSAResourceListRef list, CFIndex index,
                                                    OSAResourceInfo* info);
/// The bytes as stored, or expanded if `expand` and they are compressed (CantDecompress when that
/// fails).
/// `*data` is the caller's to release, null on failure.
OSA_PLATFORM_EXPORT OSStatus OSAResourceListCopyData(OSAResourceListRef list, CFIndex index,
                                                     Boolean expand, CFDataRef* data);

#ifdef __cplusplus
}
#endif
