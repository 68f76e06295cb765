// Launch Services: what an item is to a person, where applications are, launching them.
//
// Applications are bundles of package type 'APPL' and the desktop's entries of type Application
// (".desktop" files). An entry's bundle identifier is its desktop-entry ID without ".desktop", its
// signature the four characters of its key "X-OSA-Signature", its file name the entry's Name or its
// own file's. docs/applications.md tells each call's meaning here.
#pragma once

#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>
#include <CoreServices/AEDataModel.h>
#include <CoreServices/Files.h>

#ifdef __cplusplus
extern "C" {
#endif

// clang-format off
typedef OptionBits LSRequestedInfo;
enum { kLSRequestAllInfo = 0xFFFFFFFF };

typedef OptionBits LSItemInfoFlags;
enum {
    kLSItemInfoIsPlainFile     = 0x00000001,  ///< no folder
    kLSItemInfoIsPackage       = 0x00000002,  ///< a folder that people see as one document or program
    kLSItemInfoIsApplication   = 0x00000004,
    kLSItemInfoIsContainer     = 0x00000008,  ///< a folder, packages included
    kLSItemInfoIsAliasFile     = 0x00000010,
    kLSItemInfoIsSymlink       = 0x00000020
};
// clang-format on

typedef struct LSItemInfoRecord {
    LSItemInfoFlags flags;
    OSType filetype;
    OSType creator;
    CFStringRef extension;     ///< the caller releases it; null when there is none
    CFStringRef iconFileName;  ///< always null here
    UInt32 kindID;             ///< always 0 here
} LSItemInfoRecord;

/// Fills `info` with all it knows, whatever is requested. fnfErr when the item is not there.
OSA_PLATFORM_EXPORT OSStatus LSCopyItemInfoForURL(CFURLRef url, LSRequestedInfo requested,
                                                  LSItemInfoRecord* info);
/// The name as people see it: the Name of a desktop entry in the user's language, else the item's
/// own, without the extension of an application bundle; the caller releases it.
OSA_PLATFORM_EXPORT OSStatus LSCopyDisplayNameForRef(const FSRef* ref, CFStringRef* name);

/// Searches, in this order, the folders that the host added (OSA/HostFolders.h), ~/Applications,
/// /Applications, and the desktop's entries in $XDG_DATA_HOME and $XDG_DATA_DIRS, for an
/// application that meets every criterion given: its creator (0: any; nothing has '????'), its
/// bundle identifier (any case; null: any), its file name with or without ".app" or ".desktop" (any
/// case; null: any). Composed and decomposed accents are the same. In the host's folders and the
/// two of applications, bundles and entries are looked for in the folder and in those directly
/// below; in the desktop's, entries down to seven folders below. A link that leads to a bundle
/// counts as that bundle under the link's name; links to other folders are not followed. Of each of
/// the folders, with those below, the first 100,000 names count. An entry of an ID that an earlier
/// folder has does not count; nor does one that is hidden or whose TryExec program is missing. The
/// caller releases the URL; `ref` and `url` may be null. kLSApplicationNotFoundErr when there is
/// none, paramErr when no criterion is given.
OSA_PLATFORM_EXPORT OSStatus LSFindApplicationForInfo(OSType creator, CFStringRef bundleID,
                                                      CFStringRef name, FSRef* ref, CFURLRef* url);

// clang-format off
typedef OptionBits LSLaunchFlags;
/// Flags that say anything here; the others, and asynchronous launching, which all launching is, are
/// accepted.
enum {
    kLSLaunchDefaults         = 0x00000001,
    kLSLaunchDontAddToRecents = 0x00000100,  ///< nothing here adds to the desktop's recent items
    kLSLaunchDontSwitch       = 0x00000200,  ///< the program gets no token to come to the front with
    kLSLaunchAsync            = 0x00010000,
    kLSLaunchNewInstance      = 0x00080000   ///< start another one even if it runs already
};
// clang-format on

typedef struct LSLaunchFSRefSpec {
    const FSRef* appRef;  ///< null: each document's own application, as the desktop has it
    UInt32 numDocs;
    const FSRef* itemRefs;         ///< `numDocs` documents
    const AEDesc* passThruParams;  ///< not used: no program here waits for an Apple event
    LSLaunchFlags launchFlags;
    void* asyncRefCon;  ///< not used
} LSLaunchFSRefSpec;

/// Starts the application: a bundle's program with the documents' paths as arguments, a desktop
/// entry's command with its field codes filled in. No shell sees any of it. The program has its own
/// session, its standard streams lead nowhere, and it outlives the caller. A bundle or entry that
/// runs already, as far as its processes are known (CoreServices/Processes.h), and is given no
/// documents is brought to the front instead, as far as the desktop
/// can, unless the flags say otherwise. `launchedRef`, which may be null, becomes the
/// application's, and all zeros when the desktop chose it.
///   kLSNotAnApplicationErr        neither a bundle of type 'APPL', nor a desktop entry of type
///                                 Application, nor an executable file
///   kLSAppInTrashErr              it lies in the trash
///   kLSNoExecutableErr            the program is missing, or the bundle has none
///   kLSNoLaunchPermissionErr      it may not be executed; or the caller has rights by its own
///                                 program file (set-id, capabilities) and may start nothing
///   kLSExecutableIncorrectFormat  it is for another machine
///   kLSApplicationNotFoundErr     without application: the desktop has no opener
///   fnfErr                        the application or a document is gone
///   paramErr                      neither an application nor a document
///   kLSUnknownErr                 the system refuses for another reason
OSA_PLATFORM_EXPORT OSStatus LSOpenFromRefSpec(const LSLaunchFSRefSpec* spec, FSRef* launchedRef);

#ifdef __cplusplus
}
#endif
