// The File Manager's extension routines: what callers of the File Manager ask of it again and
// again, one question or change each, as their names say.
//
// Every routine returns the status of the File Manager call behind it. The plug-in exports them
// all.
#pragma once

#include <CoreServices/Files.h>
#include <CoreServices/Finder.h>

extern "C" {

// Finder information

/// Finder information and whether the object is a folder, in one query; any output may be null. A
/// file without Finder information answers zeros.
OSA_PLATFORM_EXPORT OSStatus FSGetFinderInfo(const FSRef* ref, FinderInfo* info,
                                             ExtendedFinderInfo* extendedInfo,
                                             Boolean* isDirectory);
/// Writes the given halves and keeps the others.
OSA_PLATFORM_EXPORT OSStatus FSSetFinderInfo(const FSRef* ref, const FinderInfo* info,
                                             const ExtendedFinderInfo* extendedInfo);
/// Sets (`set` true) or clears `flags` among the Finder flags and keeps the others.
OSA_PLATFORM_EXPORT OSStatus FSChangeFinderFlags(const FSRef* ref, Boolean set, UInt16 flags);

// References, volumes and names

OSA_PLATFORM_EXPORT OSStatus FSGetVRefNum(const FSRef* ref, FSVolumeRefNum* vRefNum);
/// The containing folder. fnfErr for the root, which has none. `parent` may be `ref` itself.
OSA_PLATFORM_EXPORT OSStatus FSGetParentRef(const FSRef* ref, FSRef* parent);
/// noErr when the object may be changed; fLckdErr when it is locked or may not be written, wPrErr
/// when its volume may not.
OSA_PLATFORM_EXPORT OSStatus FSCheckLock(const FSRef* ref);
/// Whether the reference names a live object.
OSA_PLATFORM_EXPORT Boolean FSRefValid(const FSRef* ref);
/// An HFS name (a Pascal string) as UTF-16. The hint is the name's encoding;
/// kTextEncodingUnknown: the system's. bdNamErr for an empty name, paramErr for bytes or an
/// encoding that cannot be read.
OSA_PLATFORM_EXPORT OSStatus HFSNameGetUnicodeName(ConstStr255Param hfsName, TextEncodingHint hint,
                                                   HFSUniStr255* unicodeName);

// Folders

/// Deletes whatever is in the folder, and in the folders below it, at once. Links are deleted,
/// never followed. Stops at the first object that cannot be deleted. errFSNotAFolder.
OSA_PLATFORM_EXPORT OSStatus FSDeleteContainerContents(const FSRef* container);
/// The same, and then the folder itself.
OSA_PLATFORM_EXPORT OSStatus FSDeleteContainer(const FSRef* container);

// Forks

/// A buffer of `wanted` bytes, but of at most 32768, and of fewer when memory is short; `*actual`
/// is its size. The caller gives it back with DisposePtr. Null, and 0, when there is no memory at
/// all.
OSA_PLATFORM_EXPORT void* GetTempBuffer(UInt32 wanted, UInt32* actual);
/// Copies an open fork whole into another, which is as long as the first afterwards. After a
/// failure the target may hold a part. paramErr: no buffer.
OSA_PLATFORM_EXPORT OSStatus FSCopyFork(SInt16 source, SInt16 target, void* buffer,
                                        UInt32 bufferSize);
}
