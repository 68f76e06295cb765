// Where a host or a test puts the special folders and applications, which no Mac interface lets it
// say.
#pragma once

#include <CoreFoundation/CFBase.h>

#ifdef __cplusplus
extern "C" {
#endif

// memFullErr: there was no room, and all is as before.

/// From now on FSFindFolder of the whole process finds the user's home at `path` (UTF-8, absolute),
/// every other folder below it, and the trash of every volume in it; the environment is not asked
/// any more. Null goes back to the user's real folders.
OSA_PLATFORM_EXPORT OSStatus OSASetHostFolderRoot(const char* path);

/// Folders that LSFindApplicationForInfo searches before all others, for bundles and desktop
/// entries: absolute UTF-8 paths with ":" between them. Null or empty: none. With a host root the
/// machine's own folders are not searched.
OSA_PLATFORM_EXPORT OSStatus OSASetApplicationFolders(const char* paths);

#ifdef __cplusplus
}
#endif
