// Finder information: what the Finder keeps about a file or folder beside its content.
//
// In memory all fields are in host order; on disk, wherever they are kept, big-endian. Information
// that is nowhere kept reads as zeros.
#pragma once

#include <CoreServices/MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Bits of `fdFlags` and `frFlags`.
enum {
    kIsOnDesk = 0x0001,
    kColor = 0x000E,  ///< the label, 0 to 7, one bit up
    kIsShared = 0x0040,
    kHasNoINITs = 0x0080,
    kHasBeenInited = 0x0100,
    kHasCustomIcon = 0x0400,
    kIsStationery = 0x0800,
    kNameLocked = 0x1000,
    kHasBundle = 0x2000,
    kIsInvisible = 0x4000,
    kIsAlias = 0x8000
};

/// Type and creator of a symbolic link, which keeps no Finder information of its own.
enum { kSymLinkFileType = 0x736C6E6B, kSymLinkCreator = 0x72686170 };

#pragma pack(push, 2)

/// Basic Finder information of a file.
typedef struct FInfo {
    OSType fdType;
    OSType fdCreator;
    UInt16 fdFlags;
    Point fdLocation;  ///< in its window
    SInt16 fdFldr;
} FInfo;

/// Extended Finder information of a file.
typedef struct FXInfo {
    SInt16 fdIconID;
    SInt16 fdReserved[3];
    SInt8 fdScript;
    SInt8 fdXFlags;
    SInt16 fdComment;
    SInt32 fdPutAway;  ///< node ID of the folder it was dragged from
} FXInfo;

/// The same 16 bytes of a folder.
typedef struct DInfo {
    Rect frRect;  ///< its window
    UInt16 frFlags;
    Point frLocation;
    SInt16 frView;
} DInfo;

typedef struct DXInfo {
    Point frScroll;
    SInt32 frOpenChain;
    SInt8 frScript;
    SInt8 frXFlags;
    SInt16 frComment;
    SInt32 frPutAway;
} DXInfo;

#pragma pack(pop)

/// What the catalog calls take and give: a folder's is laid out as DInfo and DXInfo.
typedef FInfo FinderInfo;
typedef FXInfo ExtendedFinderInfo;

#ifdef __cplusplus
}
static_assert(sizeof(FInfo) == 16 && sizeof(FXInfo) == 16, "published layout");
static_assert(sizeof(DInfo) == 16 && sizeof(DXInfo) == 16, "published layout");
#endif
