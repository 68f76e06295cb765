// The File Manager's extension routines: one catalog question or change each, as their names say.
//
// Every routine returns the status of the File Manager call behind it.
#pragma once

#include <CoreServices/Files.h>
#include <CoreServices/Finder.h>

extern "C" {

/// Finder information and whether the object is a folder, in one query; any output may be null. A
/// file without Finder information answers zeros.
OSStatus FSGetFinderInfo(const FSRef* ref, FinderInfo* info, ExtendedFinderInfo* extendedInfo,
                         Boolean* isDirectory);
/// Writes the given halves and keeps the others.
OSStatus FSSetFinderInfo(const FSRef* ref, const FinderInfo* info,
                         const ExtendedFinderInfo* extendedInfo);
OSStatus FSGetVRefNum(const FSRef* ref, FSVolumeRefNum* vRefNum);
/// The containing folder. fnfErr for the root, which has none. `parent` may be `ref` itself.
OSStatus FSGetParentRef(const FSRef* ref, FSRef* parent);
/// noErr when the object may be changed; fLckdErr when it is locked or may not be written, wPrErr
/// when its volume may not.
OSStatus FSCheckLock(const FSRef* ref);
/// Whether the reference names a live object.
Boolean FSRefValid(const FSRef* ref);
/// Sets (`set` true) or clears `flags` among the Finder flags and keeps the others.
OSStatus FSChangeFinderFlags(const FSRef* ref, Boolean set, UInt16 flags);
}
