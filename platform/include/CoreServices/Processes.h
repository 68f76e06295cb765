// Process Manager: which applications run, and what they are.
//
// Limit: the calling process is the only one that is known.
#pragma once

#include <CoreFoundation/CFDictionary.h>
#include <CoreServices/Files.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Serial numbers that stand for processes without being theirs; the high word is 0.
enum { kNoProcess = 0, kSystemProcess = 1, kCurrentProcess = 2 };

/// Bits of `processMode`.
enum { modeOnlyBackground = 0x00000400 };

#pragma pack(push, 2)

/// What was once pointers to buffers of the caller are words that must be 0: names and files are
/// not told this way.
typedef struct ProcessInfoRec {
    UInt32 processInfoLength;  ///< the caller sets it to the record's size, 60
    UInt32 processName;
    ProcessSerialNumber processNumber;
    UInt32 processType;  ///< file type of the application
    OSType processSignature;
    UInt32 processMode;
    UInt32 processLocation;
    UInt32 processSize;
    UInt32 processFreeMem;
    ProcessSerialNumber processLauncher;
    UInt32 processLaunchDate;  ///< ticks
    UInt32 processActiveTime;  ///< ticks
    UInt32 processAppSpec;
} ProcessInfoRec;

#pragma pack(pop)

enum { kProcessDictionaryIncludeAllInformationMask = 0xFFFFFFFF };

/// The caller's own serial number, never one of those above.
OSA_PLATFORM_EXPORT OSErr GetCurrentProcess(ProcessSerialNumber* psn);
/// The process after `psn`, which becomes its number; begins at {0, kNoProcess}. procNotFound, with
/// {0, kNoProcess}, after the last, and for a number that is nobody's.
OSA_PLATFORM_EXPORT OSErr GetNextProcess(ProcessSerialNumber* psn);
/// Whether the two name one process; {0, kCurrentProcess} names the caller.
OSA_PLATFORM_EXPORT OSErr SameProcess(const ProcessSerialNumber* first,
                                      const ProcessSerialNumber* second, Boolean* result);

// For the next calls procNotFound says that nobody has the number.

/// paramErr when the record's length is not set or one of the words that must be 0 is not.
OSA_PLATFORM_EXPORT OSErr GetProcessInformation(const ProcessSerialNumber* psn,
                                                ProcessInfoRec* info);
/// The application's bundle, or its program file when it lies in none.
OSA_PLATFORM_EXPORT OSStatus GetProcessBundleLocation(const ProcessSerialNumber* psn,
                                                      FSRef* location);
/// "BundlePath", "FileType", "FileCreator", "pid" and, as far as the information dictionary has
/// them, "CFBundleIdentifier", "CFBundleName", "CFBundleExecutable"; the caller releases it. Null
/// when there is no such process. `infoToReturn` is not used.
OSA_PLATFORM_EXPORT CFDictionaryRef ProcessInformationCopyDictionary(
    const ProcessSerialNumber* psn, UInt32 infoToReturn) CF_RETURNS_RETAINED;

#ifdef __cplusplus
}
static_assert(sizeof(ProcessInfoRec) == 60, "published length");
#endif
