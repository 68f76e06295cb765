// Resource Manager: the reading half, and making resource files. Opens resource forks and resource
// maps kept in data forks, and hands out their resources as handles.
//
// Each thread has a current resource file, a chain of the files it opened, a switch for loading and
// a ResError of its own; reference numbers are those of the File Manager and known to all threads.
// Files of different threads do not disturb each other; one file may be used by one thread at a
// time.
//
// Every call sets ResError: to noErr when it succeeded, whatever it was before.
#pragma once

#include <CoreServices/Files.h>
#include <CoreServices/MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Refers to an open resource file. 0: no file.
typedef SInt16 ResFileRefNum;
typedef SInt16 ResID;
typedef SInt16 ResAttributes;
typedef SInt16 ResourceCount;
typedef SInt16 ResourceIndex;

/// Attributes of a resource.
enum {
    resSysHeap = 0x40,
    resPurgeable = 0x20,
    resLocked = 0x10,
    resProtected = 0x08,
    resPreload = 0x04,
    resChanged = 0x02
};

/// Status of the thread's last Resource Manager call.
OSA_PLATFORM_EXPORT OSErr ResError(void);

/// Makes a file as FSCreateFileUnicode does and gives it a resource fork without resources, kept in
/// a "._" side file. An existing file without a resource fork gets one; `whichInfo` does not
/// matter then. dupFNErr: it has one, or is no file; the results are filled all the same.
OSA_PLATFORM_EXPORT void FSCreateResFile(const FSRef* parentRef, UniCharCount nameLength,
                                         const UniChar* name, FSCatalogInfoBitmap whichInfo,
                                         const FSCatalogInfo* catalogInfo, FSRef* newRef,
                                         FSSpec* newSpec);

/// Opens the resource fork of a file and makes it the thread's current file, for reading whatever
/// `permission` asks: no call of this version changes a file. Answers -1 on failure: fnfErr no such
/// file, eofErr no resource fork or an empty one, mapReadErr a fork that is no map.
OSA_PLATFORM_EXPORT ResFileRefNum FSOpenResFile(const FSRef* ref, SInt8 permission);
/// The same for a named fork: the data fork's name is empty, the resource fork's "RESOURCE_FORK"
/// (else errFSBadForkName). The status is also the result; `*refNum` is -1 on failure.
OSA_PLATFORM_EXPORT OSErr FSOpenResourceFile(const FSRef* ref, UniCharCount forkNameLength,
                                             const UniChar* forkName, SInt8 permission,
                                             ResFileRefNum* refNum);
/// Closes the file and disposes of the handles of its resources, detached ones excepted. When it
/// was current, the file opened before it is current again. resFNotFound: not an open resource
/// file.
OSA_PLATFORM_EXPORT void CloseResFile(ResFileRefNum refNum);

/// The thread's current file; 0 when it has none.
OSA_PLATFORM_EXPORT ResFileRefNum CurResFile(void);
/// Makes an open file current; 0 for none. resFNotFound: not an open resource file.
OSA_PLATFORM_EXPORT void UseResFile(ResFileRefNum refNum);
/// The file that a resource's handle belongs to; -1 with resNotFound when it belongs to none.
OSA_PLATFORM_EXPORT ResFileRefNum HomeResFile(Handle resource);

/// Whether the Get calls of this thread read the data (as at first), or only hand out empty handles
/// for what is not in memory yet.
OSA_PLATFORM_EXPORT void SetResLoad(Boolean load);

/// Types and resources of the current file. Indexes count from 1, in the order of the map; out of
/// range is resNotFound, with `*type` set to 0. Counts stop at 32767.
OSA_PLATFORM_EXPORT ResourceCount Count1Types(void);
OSA_PLATFORM_EXPORT void Get1IndType(ResType* type, ResourceIndex index);
OSA_PLATFORM_EXPORT ResourceCount Count1Resources(ResType type);

/// A resource of the current file. The handle belongs to the file: it is the same on every call
/// until it is released or detached, and goes with the file. Null with resNotFound when there is no
/// such resource, and with another status when it cannot be read: mapReadErr for data outside the
/// fork, CantDecompress for compressed data that cannot be expanded (what can, is).
OSA_PLATFORM_EXPORT Handle Get1Resource(ResType type, ResID id);
/// By name: Mac Roman, upper and lower case alike, accents told apart. The first of several.
OSA_PLATFORM_EXPORT Handle Get1NamedResource(ResType type, ConstStr255Param name);
OSA_PLATFORM_EXPORT Handle Get1IndResource(ResType type, ResourceIndex index);
/// The same through the current file and all that the thread opened before it, latest first.
OSA_PLATFORM_EXPORT Handle GetResource(ResType type, ResID id);
/// The smallest id from 128 that no resource of the type has in the current file; 0 with
/// addResFailed when all are taken.
OSA_PLATFORM_EXPORT ResID Unique1ID(ResType type);

/// Reads the data of a resource whose handle is empty; nothing for one that is in memory.
OSA_PLATFORM_EXPORT void LoadResource(Handle resource);
/// Disposes of the handle; the next Get reads the resource anew. resNotFound: no resource's handle.
OSA_PLATFORM_EXPORT void ReleaseResource(Handle resource);
/// Leaves the handle to the caller, who disposes of it; the next Get makes another.
OSA_PLATFORM_EXPORT void DetachResource(Handle resource);

/// Attributes as in the map; 0 with resNotFound for what is no resource's handle.
OSA_PLATFORM_EXPORT ResAttributes GetResAttrs(Handle resource);
/// Any output may be null. An unnamed resource gives an empty name.
OSA_PLATFORM_EXPORT void GetResInfo(Handle resource, ResID* id, ResType* type, Str255 name);
/// Bytes that the resource takes in the file, before any expansion; -1 on failure.
OSA_PLATFORM_EXPORT SInt32 GetResourceSizeOnDisk(Handle resource);

#ifdef __cplusplus
}
#endif
