// Alias Manager: alias records, and resolving alias files and links to what they stand for.
//
// Limits: a record is looked for on the volumes of this machine; none is mounted and no server is
// asked. Records are not matched against several targets, nor updated in place.
#pragma once

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
/// Finds what the record names: by its path; by the way from `fromFile`, which may be null; by
/// number, when it or a folder above it was renamed; by name in a parent folder that was moved.
/// Files stay files and folders folders. A link at the end is followed. The record does not change.
/// On failure neither result is written; `wasChanged`, which may be null, tells whether the target
/// is no longer where the record says.
///   fnfErr    it is nowhere; nsvErr: nor is the volume that the record names
///   paramErr  also for what is no alias record
OSA_PLATFORM_EXPORT OSErr FSResolveAlias(const FSRef* fromFile, AliasHandle alias, FSRef* target,
                                         Boolean* wasChanged);
/// Bytes of the record, of which the handle may hold more; 0 for what is none.
OSA_PLATFORM_EXPORT Size GetAliasSize(AliasHandle alias);
/// The application's own mark on the record, 0 at first.
OSA_PLATFORM_EXPORT OSType GetAliasUserType(AliasHandle alias);

/// Mount flags of FSResolveAliasFileWithMountFlags. Nothing here ever asks the user or mounts a
/// volume, so the flag changes nothing.
enum { kResolveAliasFileNoUI = 0x00000001 };

/// Replaces `theRef` by what it stands for. `theRef` is an alias file (Finder flag kIsAlias with a
/// resource 'alis' 0) or a symbolic link; anything else is itself its target and stays. With
/// `resolveAliasChains` an alias to an alias is followed to the end. `targetIsFolder` and
/// `wasAliased` must not be null. On failure `theRef` stays as it was:
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
/// Whether the object is an alias file or a link, and whether it is a folder itself.
OSA_PLATFORM_EXPORT OSErr FSIsAliasFile(const FSRef* fileRef, Boolean* aliasFileFlag,
                                        Boolean* folderFlag);

#ifdef __cplusplus
}
#endif
