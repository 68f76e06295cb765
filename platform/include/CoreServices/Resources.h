// Resource Manager. Opens and makes resource forks and resource maps kept in data forks, hands out
// their resources as handles, and writes changed ones back.
//
// A fork is written as a whole, compacted, the new one in place of the old in one step: whenever
// writing fails, or the process ends meanwhile, the file has its old resources or its new ones, and
// what is in memory can be written again.
//
// Each thread has a current resource file, a chain of the files it opened, a switch for loading and
// a ResError of its own; reference numbers are those of the File Manager and known to all threads.
// Files of different threads do not disturb each other; one file may be used by one thread at a
// time. Another process is not kept away: a file open for writing is written as this process knows
// it, over what another has stored since it was opened.
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

/// Attributes of a file's map; further bits are kept as they are.
enum { mapReadOnly = 0x80, mapCompact = 0x40, mapChanged = 0x20 };

/// Status of the thread's last Resource Manager call.
OSA_PLATFORM_EXPORT OSErr ResError(void);

/// Makes a file as FSCreateFileUnicode does and gives it a resource fork without resources. An
/// existing file without a resource fork, or with an empty one, gets one; `whichInfo` does not
/// matter then. The fork is kept where the file keeps an empty one, else in a "._" side file; in a
/// side file that was left over at a new file's name it replaces the fork. dupFNErr: an existing
/// file's fork has a length, or it is no file; the results are filled all the same.
OSA_PLATFORM_EXPORT void FSCreateResFile(const FSRef* parentRef, UniCharCount nameLength,
                                         const UniChar* name, FSCatalogInfoBitmap whichInfo,
                                         const FSCatalogInfo* catalogInfo, FSRef* newRef,
                                         FSSpec* newSpec);

/// The same for a named fork: the data fork's name is empty, the resource fork's "RESOURCE_FORK"
/// (else errFSBadForkName). The status is also the result. dupFNErr: the fork has a length.
OSA_PLATFORM_EXPORT OSErr FSCreateResourceFile(const FSRef* parentRef, UniCharCount nameLength,
                                               const UniChar* name, FSCatalogInfoBitmap whichInfo,
                                               const FSCatalogInfo* catalogInfo,
                                               UniCharCount forkNameLength, const UniChar* forkName,
                                               FSRef* newRef, FSSpec* newSpec);

/// Opens the resource fork of a file and makes it the thread's current file: with fsRdPerm for
/// reading, with fsCurPerm for writing if that can be and else for reading, with the others for
/// reading and writing. A fork that this process has open as a resource file for writing is not
/// opened for writing again: its number is given once more, and one CloseResFile closes it; under
/// another name of the file (a hard link) a resource fork is refused meanwhile (opWrErr). A reader
/// has a number and a map of its own, which do not follow what is written.
/// Answers -1 on failure: fnfErr no such file, eofErr no resource fork or an empty one, mapReadErr
/// a fork that is no map; paramErr no permission; for writing also wrPermErr not allowed, wPrErr
/// volume read-only, opWrErr the File Manager has the fork open for writing.
OSA_PLATFORM_EXPORT ResFileRefNum FSOpenResFile(const FSRef* ref, SInt8 permission);
/// The same for an FSSpec.
OSA_PLATFORM_EXPORT ResFileRefNum FSpOpenResFile(const FSSpec* spec, SInt8 permission);
/// A new file of the type and creator, or a resource fork for one that has none; the statuses of
/// FSCreateResFile and FSMakeFSSpec. The script code is not used.
OSA_PLATFORM_EXPORT void FSpCreateResFile(const FSSpec* spec, OSType creator, OSType fileType,
                                          ScriptCode scriptTag);
/// The same for a named fork, as FSCreateResourceFile names it. The status is also the result;
/// `*refNum` is -1 on failure. A data fork is rewritten in place, so that references to the file
/// stay good; readers must then open it again.
OSA_PLATFORM_EXPORT OSErr FSOpenResourceFile(const FSRef* ref, UniCharCount forkNameLength,
                                             const UniChar* forkName, SInt8 permission,
                                             ResFileRefNum* refNum);
/// UpdateResFile; then closes the file, whatever came of it, and disposes of the handles of its
/// resources, detached ones excepted. When it was current, the file opened before it is current
/// again. resFNotFound: not an open resource file.
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
/// Disposes of the handle; the next Get reads the resource anew. One that is changed and not yet
/// written stays, which is no failure. resNotFound: no resource's handle.
OSA_PLATFORM_EXPORT void ReleaseResource(Handle resource);
/// Leaves the handle to the caller, who disposes of it; the next Get makes another. resAttrErr: the
/// resource is changed and not yet written.
OSA_PLATFORM_EXPORT void DetachResource(Handle resource);

/// Attributes as in the map, resChanged among them; 0 with resNotFound for what is no resource's
/// handle.
OSA_PLATFORM_EXPORT ResAttributes GetResAttrs(Handle resource);
/// Any output may be null. An unnamed resource gives an empty name.
OSA_PLATFORM_EXPORT void GetResInfo(Handle resource, ResID* id, ResType* type, Str255 name);
/// Bytes that the resource takes in the file, before any expansion, 0 before it is first written;
/// -1 on failure.
OSA_PLATFORM_EXPORT SInt32 GetResourceSizeOnDisk(Handle resource);

// Changing. Each changes the map in memory; WriteResource, UpdateResFile and CloseResFile write.
// When the file is open for reading or its map has mapReadOnly, changing is refused with wrPermErr,
// and writing does nothing, which is no failure. resNotFound: no resource's handle.

/// Makes `data` a resource of the current file, the last of its type; the handle belongs to the
/// file from then on. The id may be taken: the older resource is then found before it. A null or
/// empty name is none. resFNotFound: no current file; addResFailed: `data` is null or a resource
/// already, or the map has no more room (about 2700 resources, 32 KiB of names).
OSA_PLATFORM_EXPORT void AddResource(Handle data, ResType type, ResID id, ConstStr255Param name);
/// Marks the data as changed, and the map: what the handle then holds, longer or shorter than
/// before, will be written. resAttrErr: protected.
OSA_PLATFORM_EXPORT void ChangedResource(Handle resource);
/// Takes the resource out of the map. The handle, loaded or not, is the caller's to dispose of.
/// rmvResFailed: protected.
OSA_PLATFORM_EXPORT void RemoveResource(Handle resource);
/// Sets the attributes' 8 bits, which the file gets when its map is next written; protection holds
/// at once. Two bits are not the caller's: the lowest, by which the file knows compressed data, and
/// resChanged, which can be set (so that WriteResource writes) but not cleared.
OSA_PLATFORM_EXPORT void SetResAttrs(Handle resource, ResAttributes attributes);
/// Gives the resource an id and a name, and marks the map as changed; a null or empty name leaves
/// the old one. resAttrErr: protected.
OSA_PLATFORM_EXPORT void SetResInfo(Handle resource, ResID id, ConstStr255Param name);
/// Writes the resource if its data is changed, and the map as it is; other changed resources stay
/// unwritten. One that is protected is not written, which is no failure, unless it never was.
/// Failures as UpdateResFile.
OSA_PLATFORM_EXPORT void WriteResource(Handle resource);

/// Writes the changed resources, as WriteResource does each, and the map, if there is one to write
/// or the map is marked as changed; nothing for a map with mapReadOnly. A protected one that is not
/// written stays changed. Changed data is written plain; compressed data that is not changed stays
/// as it is. After a failure everything in memory is as before.
/// resFNotFound: not an open resource file; mapReadErr: something in the old fork that would not
/// come out the same, such as a resource that lies outside it; fileBoundsErr: more than a map can
/// express (16 MiB before the last resource, 32 KiB of map or names, 32 MiB of one resource);
/// dskFulErr, fnfErr and the like.
/// FSFlushFork with the file's number makes last what was written before; it writes nothing itself.
OSA_PLATFORM_EXPORT void UpdateResFile(ResFileRefNum refNum);

/// Attributes of the map; a file open for reading has mapReadOnly. 0 with resFNotFound.
OSA_PLATFORM_EXPORT ResAttributes GetResFileAttrs(ResFileRefNum refNum);
/// Sets them; mapChanged or mapCompact has UpdateResFile write the file anew. A file open for
/// reading keeps mapReadOnly.
OSA_PLATFORM_EXPORT void SetResFileAttrs(ResFileRefNum refNum, ResAttributes attributes);

#ifdef __cplusplus
}
#endif
