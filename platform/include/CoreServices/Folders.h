// Folder Manager: where the system's and the user's special folders are.
#pragma once

#include <CoreServices/Files.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Domains, given instead of a volume.
enum {
    kOnSystemDisk = -32768,
    kOnAppropriateDisk = -32767,
    kSystemDomain = -32766,
    kLocalDomain = -32765,
    kNetworkDomain = -32764,
    kUserDomain = -32763
};

enum { kDontCreateFolder = 0, kCreateFolder = 1 };

/// Folder types.
enum {
    kTrashFolderType = 0x74727368,               ///< 'trsh'
    kTemporaryFolderType = 0x74656D70,           ///< 'temp'
    kUserSpecificTmpFolderType = 0x75746D70,     ///< 'utmp'
    kPreferencesFolderType = 0x70726566,         ///< 'pref'
    kApplicationSupportFolderType = 0x61737570,  ///< 'asup'
    kCachedDataFolderType = 0x63616368,          ///< 'cach'
    kDesktopFolderType = 0x6465736B,             ///< 'desk'
    kDocumentsFolderType = 0x646F6373,           ///< 'docs'
    kApplicationsFolderType = 0x61707073,        ///< 'apps'
    kCurrentUserFolderType = 0x63757372          ///< 'cusr'
};

/// The folder of `folderType` for a volume or domain. Only the trash differs from volume to volume.
/// The Applications folder is the user's own for kUserDomain and the machine's otherwise. For
/// kSystemDomain, kLocalDomain and kNetworkDomain preferences, application support and caches are
/// the machine's: in /Library where there is one, else /etc/xdg, /usr/local/share and /var/cache.
/// All other folders are the user's; desktop and documents lie where user-dirs.dirs says. With
/// `createFolder` it is made when it is missing, parents included, as far as the caller may.
/// fnfErr: it is missing, or the type is not one of the above; nsvErr: no such volume.
OSA_PLATFORM_EXPORT OSErr FSFindFolder(FSVolumeRefNum vRefNum, OSType folderType,
                                       Boolean createFolder, FSRef* foundRef);

#ifdef __cplusplus
}
#endif
