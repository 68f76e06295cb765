// Where a host or a test puts the special folders, which no Mac interface lets it say.
#pragma once

#include <CoreFoundation/CFBase.h>

#ifdef __cplusplus
extern "C" {
#endif

/// From now on FSFindFolder of the whole process finds the user's home at `path` (UTF-8, absolute),
/// every other folder below it, and the trash of every volume in it; the environment is not asked
/// any more. Null goes back to the user's real folders.
OSA_PLATFORM_EXPORT void OSASetHostFolderRoot(const char* path);

#ifdef __cplusplus
}
#endif
