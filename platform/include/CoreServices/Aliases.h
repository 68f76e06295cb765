// Alias Manager: resolving alias files and links to what they stand for.
//
// Limit: alias records themselves (making, resolving and matching AliasHandles) are not here yet.
#pragma once

#include <CoreServices/Files.h>

#ifdef __cplusplus
extern "C" {
#endif

/// An alias record in a handle: what the record holds is the Alias Manager's own business.
typedef struct AliasRecord AliasRecord;
typedef AliasRecord** AliasHandle;

/// Mount flags of FSResolveAliasFileWithMountFlags. Nothing here ever asks the user or mounts a
/// volume, so the flag changes nothing.
enum { kResolveAliasFileNoUI = 0x00000001 };

/// Replaces `theRef` by what it stands for. `theRef` is an alias file (Finder flag kIsAlias with a
/// resource 'alis' 0) or a symbolic link; anything else is itself its target and stays. With
/// `resolveAliasChains` an alias to an alias is followed to the end. `targetIsFolder` and
/// `wasAliased` must not be null. On failure `theRef` stays as it was:
///   fnfErr     what the alias names is nowhere to be found, or aliases lead in a circle
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
