// What a file says as an alias, and where that leads: for tools that show it.
#pragma once

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFDictionary.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Describes the alias file, the symbolic link, or the file that is nothing but an alias record or
/// bookmark data, at `path` (bytes as the kernel takes them; a link at the end is not followed).
/// `*description` is the caller's to release, null on failure: fnfErr and the like; mapReadErr when
/// the file is no alias or a damaged one.
///
/// The keys are strings; those for which the alias has nothing are missing:
///   kind            "alias file", "alias record", "bookmark", "symbolic link"
///   version         number, of a record
///   targetKind      "file" or "folder", in a record
///   targetName, parentName, volumeName, zone, server      strings
///   recordedPath    POSIX path: of a record from the root folder on, of a link its text
///   classicPath     "Volume:Folder:Name", names with "/" as the Mac shows them
///   targetID, parentID      numbers
///   folderIDs       numbers, from the parent folder upward
///   targetCreated, volumeCreated      dates
///   type, creator, userType, fileSystem      strings of two or four characters
///   levelsUp, levelsDown     the way from the alias's file to the target
/// and of looking for the target, one step of a chain, which changes nothing:
///   status          number, 0 when it was found
///   leadsTo         its path
///   foundBy         "path", "way from the alias", "number", "name", "search", "link"
OSA_PLATFORM_EXPORT OSStatus OSACopyAliasDescription(const char* path,
                                                     CFDictionaryRef* description);

#ifdef __cplusplus
}
#endif
