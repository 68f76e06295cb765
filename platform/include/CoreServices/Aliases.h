// Alias Manager: alias records, and resolving alias files and links to what they stand for.
//
// Limits: a record is looked for on the volumes of this machine; none is mounted, no server is
// asked, and no user.
#pragma once

#include <CoreFoundation/CFString.h>
#include <CoreServices/Files.h>

#ifdef __cplusplus
extern "C" {
#endif

/// An alias record in a handle: what the record holds is the Alias Manager's own business.
typedef struct AliasRecord AliasRecord;
typedef AliasRecord** AliasHandle;

// Alias records. The caller disposes of a handle it was given with DisposeHandle; it is null
// whenever the status is not noErr. Statuses besides those of every call on references:
//   paramErr        a null pointer or handle where one is needed
//   memFullErr      no room
//   pathTooLongErr  the target's path does not fit into a record

/// A record of everything that helps to find the target again: place, names, numbers, dates, type
/// and creator. With `fromFile`, which may be null, also the way from that file to the target.
OSA_PLATFORM_EXPORT OSErr FSNewAlias(const FSRef* fromFile, const FSRef* target,
                                     AliasHandle* inAlias);
OSA_PLATFORM_EXPORT OSErr FSNewAliasMinimal(const FSRef* target, AliasHandle* inAlias);
/// A record of a path "Volume:folder:leaf" in Mac Roman, with ":" at its end for a folder. Nothing
/// of it need exist; what does is recorded as the file or folder it is. Zone and server may be
/// null; they are kept and not asked. bdNamErr: no full path.
OSA_PLATFORM_EXPORT OSErr NewAliasMinimalFromFullPath(SInt16 fullPathLength, const void* fullPath,
                                                      ConstStr32Param zoneName,
                                                      ConstStr31Param serverName,
                                                      AliasHandle* alias);
/// Makes the record in the handle that of `target`, as FSNewAlias would; the handle is resized. The
/// user type stays, and so do bytes that the application keeps behind the record. `wasChanged`,
/// which may be null, tells whether any byte is another now. A failure leaves the handle as it was:
///   paramErr  also for what is no alias record
OSA_PLATFORM_EXPORT OSErr FSUpdateAlias(const FSRef* fromFile, const FSRef* target,
                                        AliasHandle alias, Boolean* wasChanged);

// Looking for the target. In this order, each way only when those before found nothing:
//   1. the way from `fromFile`, which may be null, when the record holds one;
//   2. the target's number in the recorded parent folder, which is followed by its numbers when it
//      was renamed: the object that had the name when the record was made, whatever has it now;
//   3. the recorded path, on the volume that is mounted where the record says, on the one of the
//      recorded name, and on that of `fromFile`; then the name in the parent folder of 2;
//   4. a walk through the volume for the target's number, outward from the recorded parent, so that
//      what was moved nearby is met first. It enters no other volume and follows no links, and
//      gives up after 200,000 objects or two seconds. What it could not find it does not look for
//      again within a minute.
// Files stay files and folders folders. Numbers are given to new objects once the old are gone, so
// an object of the target's number must also have its creation date. Where no dates are kept 2
// comes behind 3, and 4 wants the name, too. A link at the end is followed.

/// Finds what the record names. A record that tells anything else than what is true of the target
/// now is made anew in its handle, which is resized, and `wasChanged`, which may be null, tells so;
/// when there is no room for it the record stays and the target is found all the same. What is
/// reached through a link leaves the record as it is. On failure nothing is written.
///   fnfErr    it is nowhere; nsvErr: nor is the volume that the record names
///   paramErr  also for what is no alias record
OSA_PLATFORM_EXPORT OSErr FSResolveAlias(const FSRef* fromFile, AliasHandle alias, FSRef* target,
                                         Boolean* wasChanged);
/// The same for a record out of an alias file. No server is ever logged on to, so `logon` changes
/// nothing.
OSA_PLATFORM_EXPORT OSErr FSFollowFinderAlias(const FSRef* fromFile, AliasHandle alias,
                                              Boolean logon, FSRef* target, Boolean* wasChanged);

/// Rules of FSMatchAliasNoUI.
enum {
    kARMMountVol = 0x00000001,    ///< no effect: nothing is ever mounted
    kARMNoUI = 0x00000002,        ///< no effect: nobody is ever asked
    kARMMultVols = 0x00000008,    ///< every volume that this process has met, not those of 3 only
    kARMSearch = 0x00000100,      ///< the walk, when nothing else finds it; else only 1 to 3
    kARMSearchMore = 0x00000200,  ///< the walk in any case, also for objects of the same name
    kARMSearchRelFirst = 0x00000400,  ///< 1 comes first; else behind the path of 3
    kARMTryFileIDFirst = 0x00000800   ///< 2 comes before 1
};

/// Whether a candidate is refused. With `*quitFlag` set the search ends after this one.
typedef Boolean (*FSAliasFilterProcPtr)(const FSRef* ref, Boolean* quitFlag, Ptr myDataPtr);

/// Gathers what the record may mean, the likeliest first. `*aliasCount` holds the places in
/// `aliasList`, at least 1, and becomes the number of objects found. `needsUpdate`, which may be
/// null, tells whether the record is out of date by the first of them; it does not change. `filter`
/// may be null.
///   fnfErr, nsvErr  nothing found: the count is 0, and `needsUpdate` not written
///   paramErr        also for what is no alias record
OSA_PLATFORM_EXPORT OSStatus FSMatchAliasNoUI(const FSRef* fromFile, UInt32 rulesMask,
                                              AliasHandle inAlias, SInt16* aliasCount,
                                              FSRef* aliasList, Boolean* needsUpdate,
                                              FSAliasFilterProcPtr filter, void* yourDataPtr);

// What the record tells

typedef UInt32 FSAliasInfoBitmap;
enum {
    kFSAliasInfoNone = 0x00000000,
    kFSAliasInfoVolumeCreateDate = 0x00000001,
    kFSAliasInfoTargetCreateDate = 0x00000002,
    kFSAliasInfoFinderInfo = 0x00000004,
    kFSAliasInfoIsDirectory = 0x00000008,
    kFSAliasInfoIDs = 0x00000010,
    kFSAliasInfoFSInfo = 0x00000020,
    kFSAliasInfoVolumeFlags = 0x00000040
};

#pragma pack(push, 2)
typedef struct FSAliasInfo {
    UTCDateTime volumeCreateDate;
    UTCDateTime targetCreateDate;
    OSType fileType;
    OSType fileCreator;
    UInt32 parentDirID;
    UInt32 nodeID;
    UInt16 filesystemID;
    UInt16 signature;
    Boolean volumeIsBootVolume;
    Boolean volumeIsAutomounted;  ///< always false: records do not tell
    Boolean volumeIsEjectable;
    Boolean volumeHasPersistentFileIDs;
    Boolean isDirectory;
} FSAliasInfo;
#pragma pack(pop)

/// What the record holds, without looking for the target. Any result may be null. The caller
/// releases `*pathString`: the absolute path in the POSIX manner, null when the record has none.
/// `*whichInfo` tells which fields of `info` the record holds; the others are zero.
///   paramErr  no alias record
///   bdNamErr  a wanted name is none that Unicode or 255 units can hold
OSA_PLATFORM_EXPORT OSStatus FSCopyAliasInfo(AliasHandle inAlias, HFSUniStr255* targetName,
                                             HFSUniStr255* volumeName, CFStringRef* pathString,
                                             FSAliasInfoBitmap* whichInfo, FSAliasInfo* info);
/// Bytes of the record, of which the handle may hold more; 0 for what is none.
OSA_PLATFORM_EXPORT Size GetAliasSize(AliasHandle alias);
/// The application's own mark on the record, 0 at first.
OSA_PLATFORM_EXPORT OSType GetAliasUserType(AliasHandle alias);
/// Nothing happens to what is too short to be a record.
OSA_PLATFORM_EXPORT void SetAliasUserType(AliasHandle alias, OSType userType);

/// Mount flags of FSResolveAliasFileWithMountFlags: without this one the walk is taken, too, over
/// which a person would wait.
enum { kResolveAliasFileNoUI = 0x00000001 };

/// Replaces `theRef` by what it stands for. `theRef` is an alias file (Finder flag kIsAlias with a
/// resource 'alis' 0, or with bookmark data in the data fork) or a symbolic link; anything else is
/// itself its target and stays. No file is written to. With `resolveAliasChains` an alias to an
/// alias is followed to the end. `targetIsFolder` and `wasAliased` must not be null. On failure
/// `theRef` stays as it was:
///   fnfErr     what the alias names is nowhere to be found, or aliases lead in a circle
///   nsvErr     nor is the volume that it names
///   paramErr   a null pointer; errFSBadFSRef and the like as for every reference
OSA_PLATFORM_EXPORT OSErr FSResolveAliasFileWithMountFlags(FSRef* theRef,
                                                           Boolean resolveAliasChains,
                                                           Boolean* targetIsFolder,
                                                           Boolean* wasAliased, UInt32 mountFlags);
/// The same with flags 0.
OSA_PLATFORM_EXPORT OSErr FSResolveAliasFile(FSRef* theRef, Boolean resolveAliasChains,
                                             Boolean* targetIsFolder, Boolean* wasAliased);
/// The same for an FSSpec, which becomes the target's; bdNamErr when that has no such form.
OSA_PLATFORM_EXPORT OSErr ResolveAliasFile(FSSpec* theSpec, Boolean resolveAliasChains,
                                           Boolean* targetIsFolder, Boolean* wasAliased);
/// Whether the object is an alias file or a link, and whether it is a folder itself.
OSA_PLATFORM_EXPORT OSErr FSIsAliasFile(const FSRef* fileRef, Boolean* aliasFileFlag,
                                        Boolean* folderFlag);

#ifdef __cplusplus
}
static_assert(sizeof(FSAliasInfo) == 42, "published layout");
#endif
