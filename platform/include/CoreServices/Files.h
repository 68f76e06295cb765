// File Manager: references to file-system objects, the catalog, forks and iteration.
//
// Conventions. Names are UTF-16 and hold ":" where the disk has "/" and the reverse. A result
// pointer may be null when the caller does not want that result, unless a function says otherwise.
// Statuses that every call may answer besides its own:
//   noErr           done
//   paramErr        a null pointer where one is needed
//   errFSBadFSRef   the reference is zeroed or was never one
//   fnfErr          the object it named is gone, or another object has its place
//   permErr         the system refuses to read; ioErr and the like as the system says
// Every call asks the disk; nothing a reference told once is believed later. All are safe on any
// thread.
#pragma once

#include <CoreServices/Finder.h>
#include <CoreServices/MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Negative for a volume; 0 names none.
typedef SInt16 FSVolumeRefNum;
typedef struct OpaqueFSIterator* FSIterator;
typedef UInt32 FSCatalogInfoBitmap;
typedef UInt32 FSIteratorFlags;
typedef UInt32 FSVolumeInfoBitmap;
typedef UInt32 ItemCount;

/// A reference to an object that existed when it was made. Opaque, copied freely, owns nothing; all
/// zeros names nothing. It names the object by place and identity: once the object is moved or
/// replaced the reference is dead (fnfErr).
typedef struct FSRef {
    UInt8 hidden[80];
} FSRef;

#pragma pack(push, 2)

/// The older way to name an object that may not exist: volume, node ID of the folder, Mac Roman
/// leaf name of at most 63 bytes.
typedef struct FSSpec {
    FSVolumeRefNum vRefNum;
    SInt32 parID;
    Str63 name;
} FSSpec;

typedef struct FSPermissionInfo {
    UInt32 userID;
    UInt32 groupID;
    UInt8 reserved1;
    UInt8 userAccess;
    UInt16 mode;  ///< as the system keeps it, file type bits included
    UInt32 reserved2;
} FSPermissionInfo;

/// What the catalog tells of one object; only fields that were asked for are written. Dates are
/// UTC.
typedef struct FSCatalogInfo {
    UInt16 nodeFlags;
    FSVolumeRefNum volume;
    UInt32 parentDirID;
    UInt32 nodeID;  ///< 2 for the root folder, whose parent is 1
    UInt8 sharingFlags;
    UInt8 userPrivileges;
    UInt8 reserved1;
    UInt8 reserved2;
    UTCDateTime createDate;
    UTCDateTime contentModDate;
    UTCDateTime attributeModDate;
    UTCDateTime accessDate;
    UTCDateTime backupDate;  ///< zero: not kept
    FSPermissionInfo permissions;
    FinderInfo finderInfo;
    ExtendedFinderInfo extFinderInfo;
    UInt64 dataLogicalSize;
    UInt64 dataPhysicalSize;
    UInt64 rsrcLogicalSize;
    UInt64 rsrcPhysicalSize;
    UInt32 valence;  ///< objects in a folder
    TextEncodingHint textEncodingHint;
} FSCatalogInfo;

typedef struct FSVolumeInfo {
    UInt32 signature;
    FSVolumeRefNum volume;
} FSVolumeInfo;

#pragma pack(pop)

enum {
    kFSCatInfoNone = 0x0000,
    kFSCatInfoTextEncoding = 0x0001,
    kFSCatInfoNodeFlags = 0x0002,
    kFSCatInfoVolume = 0x0004,
    kFSCatInfoParentDirID = 0x0008,
    kFSCatInfoNodeID = 0x0010,
    kFSCatInfoCreateDate = 0x0020,
    kFSCatInfoContentMod = 0x0040,
    kFSCatInfoAttrMod = 0x0080,
    kFSCatInfoAccessDate = 0x0100,
    kFSCatInfoBackupDate = 0x0200,
    kFSCatInfoAllDates = 0x03E0,
    kFSCatInfoPermissions = 0x0400,
    kFSCatInfoFinderInfo = 0x0800,
    kFSCatInfoFinderXInfo = 0x1000,
    kFSCatInfoValence = 0x2000,
    kFSCatInfoDataSizes = 0x4000,
    kFSCatInfoRsrcSizes = 0x8000,
    kFSCatInfoSettableInfo = 0x1FE3,
    kFSCatInfoGettableInfo = 0xFFFF
};

/// Bits of `nodeFlags`.
enum {
    kFSNodeLockedMask = 0x0001,  ///< nobody may write to it
    kFSNodeIsDirectoryMask = 0x0010
};

/// Permissions for opening.
enum {
    fsCurPerm = 0,  ///< reading and writing when that is allowed, else reading
    fsRdPerm = 1,
    fsWrPerm = 2,
    fsRdWrPerm = 3,
    fsRdWrShPerm = 4
};

/// Where a position counts from.
enum { fsAtMark = 0, fsFromStart = 1, fsFromLEOF = 2, fsFromMark = 3 };

enum { kFSIterateFlat = 0, kFSIterateDelete = 2 };
enum { fsRtParID = 1, fsRtDirID = 2 };
enum { kFSInvalidVolumeRefNum = 0, kFSVolInfoNone = 0 };

// References

/// The child of `parent` with exactly this name; a link at the end is not followed. U+0000 at the
/// end of the name is dropped. fnfErr: no such child (also for "." and ".."); errFSNotAFolder;
/// errFSMissingName: empty; errFSNameTooLong: over 255 units; bdNamErr: U+0000 inside. The encoding
/// hint is not used.
OSA_PLATFORM_EXPORT OSErr FSMakeFSRefUnicode(const FSRef* parent, UniCharCount nameLength,
                                             const UniChar* name, TextEncodingHint hint,
                                             FSRef* newRef);
/// `path` is UTF-8, absolute or relative to the current folder. Links are followed.
OSA_PLATFORM_EXPORT OSStatus FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory);
/// The absolute path, ended by a NUL; no "/" at the end of a folder's. pathTooLongErr when it does
/// not fit into `pathSize` bytes.
OSA_PLATFORM_EXPORT OSStatus FSRefMakePath(const FSRef* ref, UInt8* path, UInt32 pathSize);
/// noErr: one object; errFSRefsDifferent; diffVolErr: different objects on different volumes.
OSA_PLATFORM_EXPORT OSErr FSCompareFSRefs(const FSRef* ref1, const FSRef* ref2);

// Catalog

/// Reads the fields named by `whichInfo`, the name, the FSSpec and the parent. A
/// folder asked for nothing but fork sizes answers fnfErr. The root folder's parent is a zeroed
/// reference. bdNamErr when the name is wanted and is no UTF-8 or has over 255 units.
OSA_PLATFORM_EXPORT OSErr FSGetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap whichInfo,
                                           FSCatalogInfo* catalogInfo, HFSUniStr255* outName,
                                           FSSpec* fsSpec, FSRef* parentRef);
/// Writes permissions (only the mode; user and group stay), the dates of content modification and
/// access, and either half of the Finder information, which goes to where it was found, else to a
/// "._" side file. A failure leaves what was there. paramErr: a field that cannot be set.
/// afpAccessDenied, wPrErr: the object, or the folder of its side file, may not be written.
/// dupFNErr: another file has the side file's name; errFSNameTooLong: a name of over 253 bytes
/// leaves no room for "._".
/// Limits: unimpErr for the other settable fields, then nothing is written (Linux sets the other
/// dates itself, or keeps none), and for Finder information of links, devices and the root folder.
OSA_PLATFORM_EXPORT OSErr FSSetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap whichInfo,
                                           const FSCatalogInfo* catalogInfo);

/// Makes an empty file in the folder `parentRef`, named as for FSMakeFSRefUnicode; settable fields
/// are applied as by FSSetCatalogInfo, whose failure removes the file again. dupFNErr: something
/// has the name, if only a link that leads nowhere; bdNamErr: "." and ".."; afpAccessDenied,
/// wPrErr: the folder may not be written. `newSpec` of a name without an old-style form is
/// bdNamErr, with the file made and `newRef` filled. Side files that somebody left behind under the
/// name become the new file's.
OSA_PLATFORM_EXPORT OSErr FSCreateFileUnicode(const FSRef* parentRef, UniCharCount nameLength,
                                              const UniChar* name, FSCatalogInfoBitmap whichInfo,
                                              const FSCatalogInfo* catalogInfo, FSRef* newRef,
                                              FSSpec* newSpec);

/// The same for a folder, in which nobody but the owner may write unless `whichInfo` has the
/// permissions. `newDirID` is its node ID.
OSA_PLATFORM_EXPORT OSErr FSCreateDirectoryUnicode(const FSRef* parentRef, UniCharCount nameLength,
                                                   const UniChar* name,
                                                   FSCatalogInfoBitmap whichInfo,
                                                   const FSCatalogInfo* catalogInfo, FSRef* newRef,
                                                   FSSpec* newSpec, UInt32* newDirID);

// Deleting, moving and renaming. What keeps an object's resource fork and Finder information beside
// it goes with it; docs/formats/forks-on-linux.md says how, and what is there after a crash. A link
// is the object itself: nothing beyond it is touched. References to the object made before are dead
// afterwards, but forks that are open stay open. A failure leaves everything as it was. Statuses
// besides those of every call:
//   afpAccessDenied, wPrErr   a folder that must change may not
//   dupFNErr                  something has the new name, or forks or Finder information are kept
//                             for it
//   fBsyErr                   for deleting: a folder with something in it that by its content is
//                             no side file; kFSIterateDelete shows it
//   paramErr                  the root folder

/// Deletes a file or an empty folder at once.
OSA_PLATFORM_EXPORT OSErr FSDeleteObject(const FSRef* ref);
/// `newRef` names the object at its new place; its own folder again is no failure. diffVolErr:
/// another volume, also when a side file would have to leave its own; errFSNotAFolder; paramErr: a
/// folder into itself or what it holds, a side file that is a link and would lead nowhere, or two
/// __MACOSX folders with side files for it that are not blank and would get one place.
OSA_PLATFORM_EXPORT OSErr FSMoveObject(const FSRef* ref, const FSRef* destDirectory, FSRef* newRef);
/// The new name as for FSCreateFileUnicode; its own name again is no failure. The encoding hint is
/// not used.
OSA_PLATFORM_EXPORT OSErr FSRenameUnicode(const FSRef* ref, UniCharCount nameLength,
                                          const UniChar* name, TextEncodingHint textEncodingHint,
                                          FSRef* newRef);
/// Two files trade their contents, both forks and dates; names, permissions and Finder information
/// stay. It is the files that get each other's names: owner, creation date and forks that are open
/// go with the contents, and references to either are dead. The data forks change places in one
/// step. diffVolErr; notAFileErr.
OSA_PLATFORM_EXPORT OSErr FSExchangeObjects(const FSRef* ref, const FSRef* destRef);

/// Starts a walk over a folder's own children: without the side files that keep other objects'
/// forks (kFSIterateFlat), or all of them, for whoever deletes them (kFSIterateDelete).
/// errFSBadIteratorFlags otherwise. The caller closes the iterator.
OSA_PLATFORM_EXPORT OSErr FSOpenIterator(const FSRef* container, FSIteratorFlags flags,
                                         FSIterator* iterator);
OSA_PLATFORM_EXPORT OSErr FSCloseIterator(FSIterator iterator);
/// The next children, at most `maximumObjects`, in the file system's order. The arrays, each of
/// which may be null, have that many places. Side files that keep other files' forks are left out.
/// errFSNoMoreItems, with none given, after the last. `containerChanged` becomes false.
OSA_PLATFORM_EXPORT OSErr FSGetCatalogInfoBulk(FSIterator iterator, ItemCount maximumObjects,
                                               ItemCount* actualObjects, Boolean* containerChanged,
                                               FSCatalogInfoBitmap whichInfo,
                                               FSCatalogInfo* catalogInfos, FSRef* refs,
                                               FSSpec* specs, HFSUniStr255* names);

/// Volume number, name and root folder. `volumeIndex` is not used and 0; nsvErr for an unknown
/// volume.
OSA_PLATFORM_EXPORT OSErr FSGetVolumeInfo(FSVolumeRefNum volume, ItemCount volumeIndex,
                                          FSVolumeRefNum* actualVolume,
                                          FSVolumeInfoBitmap whichInfo, FSVolumeInfo* info,
                                          HFSUniStr255* volumeName, FSRef* rootDirectory);

// Old-style specifications

/// `name` is Mac Roman: a leaf in the folder `dirID`; a path ":folder:leaf" below it; empty for the
/// folder itself; or a full path "Volume:folder:leaf", whatever the numbers say. fnfErr with `spec`
/// filled when only the leaf is missing; dirNFErr when its folder is, or is not known; bdNamErr for
/// a leaf over 63 bytes and for what is no path.
OSA_PLATFORM_EXPORT OSErr FSMakeFSSpec(FSVolumeRefNum vRefNum, SInt32 dirID,
                                       ConstStr255Param fileName, FSSpec* spec);
/// fnfErr when there is no such object.
OSA_PLATFORM_EXPORT OSErr FSpMakeFSRef(const FSSpec* source, FSRef* newRef);

/// Makes an empty file; the statuses of FSMakeFSSpec and FSCreateFileUnicode. The script code is
/// not used.
OSA_PLATFORM_EXPORT OSErr FSpCreate(const FSSpec* spec, OSType creator, OSType fileType,
                                    ScriptCode scriptTag);

// Forks

/// The empty name.
OSA_PLATFORM_EXPORT OSErr FSGetDataForkName(HFSUniStr255* dataForkName);
/// "RESOURCE_FORK".
OSA_PLATFORM_EXPORT OSErr FSGetResourceForkName(HFSUniStr255* resourceForkName);

/// Opens a fork; the caller closes `forkRefNum`, a positive number that forks and resource files
/// share. A file's missing resource fork is an empty one. notAFileErr: a folder;
/// errFSForkNotFound: the resource fork of a folder or a link; errFSBadForkName: neither name.
/// For writing: opWrErr when it is open for writing already, unless both opened it with
/// fsRdWrShPerm under one name of the file; readers may have it open, and go on reading what they
/// opened. Each name of a file with several has
/// a resource fork of its own in side files, but not in attributes. fLckdErr: nobody may
/// write to the file; wrPermErr: the caller may not; wPrErr: nor to the volume; dupFNErr: another
/// object has the name of the side file that the fork would need; errFSNameTooLong: a name of over
/// 253 bytes can have none. Data forks are changed in place. A resource fork is changed beside,
/// becomes the file's at FSFlushFork and when it is closed, and where
/// docs/formats/forks-on-linux.md says; several numbers of fsRdWrShPerm see each other's changes at
/// once. It follows its file when that is renamed or moved by this process.
OSA_PLATFORM_EXPORT OSErr FSOpenFork(const FSRef* ref, UniCharCount forkNameLength,
                                     const UniChar* forkName, SInt8 permissions,
                                     SInt16* forkRefNum);
/// The data fork. fnfErr when there is no such file.
OSA_PLATFORM_EXPORT OSErr FSpOpenDF(const FSSpec* spec, SInt8 permission, SInt16* refNum);
/// rfNumErr: not an open fork. The same for all calls that take a number. A failure to write what
/// was changed is answered (dskFulErr, fnfErr when the file is gone, dupFNErr when another object
/// got the side file's name, …), the old resource fork stays, and the number is closed all the
/// same.
OSA_PLATFORM_EXPORT OSErr FSCloseFork(SInt16 forkRefNum);
OSA_PLATFORM_EXPORT OSErr FSClose(SInt16 refNum);
/// Writes what was changed and waits until it is on disk. Failures as above, with everything still
/// open. Resource files may be given, too.
OSA_PLATFORM_EXPORT OSErr FSFlushFork(SInt16 forkRefNum);

/// Every file has both forks: always errFSForkExists, and FSOpenFork can write to it.
/// errFSBadForkName; notAFileErr.
OSA_PLATFORM_EXPORT OSErr FSCreateFork(const FSRef* ref, UniCharCount forkNameLength,
                                       const UniChar* forkName);
/// Leaves the fork empty. fBsyErr: it is open for writing; else as for opening and closing it.
OSA_PLATFORM_EXPORT OSErr FSDeleteFork(const FSRef* ref, UniCharCount forkNameLength,
                                       const UniChar* forkName);

/// Reads from a position. eofErr with the bytes there were when the fork ends before the count is
/// done; `actualCount` may be null. The mark is left behind the bytes read. permErr: opened with
/// fsWrPerm. What was written by the same number is seen.
OSA_PLATFORM_EXPORT OSErr FSReadFork(SInt16 forkRefNum, UInt16 positionMode, SInt64 positionOffset,
                                     UInt32 requestCount, void* buffer, UInt32* actualCount);
/// Writes at a position, which may be past the end: zeros come between. The mark is left behind the
/// bytes written, of which `actualCount`, also after a failure, is the number; it may be null.
/// wrPermErr: opened for reading; dskFulErr; fileBoundsErr: over 2^63 bytes, or 4 GiB in a resource
/// fork.
OSA_PLATFORM_EXPORT OSErr FSWriteFork(SInt16 forkRefNum, UInt16 positionMode, SInt64 positionOffset,
                                      UInt32 requestCount, const void* buffer, UInt32* actualCount);
/// Of a fork opened for reading, as it was then.
OSA_PLATFORM_EXPORT OSErr FSGetForkSize(SInt16 forkRefNum, SInt64* forkSize);
/// Cuts the fork off, and the mark with it, or adds zeros. posErr: before the start; statuses as
/// for FSWriteFork.
OSA_PLATFORM_EXPORT OSErr FSSetForkSize(SInt16 forkRefNum, UInt16 positionMode,
                                        SInt64 positionOffset);
OSA_PLATFORM_EXPORT OSErr FSGetForkPosition(SInt16 forkRefNum, SInt64* position);
/// As SetFPos.
OSA_PLATFORM_EXPORT OSErr FSSetForkPosition(SInt16 forkRefNum, UInt16 positionMode,
                                            SInt64 positionOffset);

/// Reads `*count` bytes at the mark; `*count` becomes the number read. eofErr as above.
OSA_PLATFORM_EXPORT OSErr FSRead(SInt16 refNum, SInt32* count, void* buffer);
/// Writes `*count` bytes at the mark; `*count` becomes the number written. As FSWriteFork.
OSA_PLATFORM_EXPORT OSErr FSWrite(SInt16 refNum, SInt32* count, const void* buffer);
/// fileBoundsErr for a fork of 2 GiB and more.
OSA_PLATFORM_EXPORT OSErr GetEOF(SInt16 refNum, SInt32* logEOF);
/// As FSSetForkSize from the start.
OSA_PLATFORM_EXPORT OSErr SetEOF(SInt16 refNum, SInt32 logEOF);
OSA_PLATFORM_EXPORT OSErr GetFPos(SInt16 refNum, SInt32* filePos);
/// Past the end: the mark goes to the end and eofErr is answered. Before the start: posErr, and the
/// mark stays.
OSA_PLATFORM_EXPORT OSErr SetFPos(SInt16 refNum, SInt16 posMode, SInt32 posOff);

#ifdef __cplusplus
}
static_assert(sizeof(FSRef) == 80 && sizeof(FSSpec) == 70, "published layout");
static_assert(sizeof(FSCatalogInfo) == 144 && sizeof(FSPermissionInfo) == 16, "published layout");
static_assert(sizeof(UTCDateTime) == 8 && sizeof(HFSUniStr255) == 512, "published layout");
#endif
