// Process Manager: which programs run, what they are, starting them and bringing them to the front.
//
// The processes are those of the calling user that run a program file; but for the caller itself,
// not those that the kernel keeps even from the user whose they are (programs with rights by their
// file, such that asked not to be dumped) or whose first thread has ended. A process belongs to an
// application when its program lies in a bundle, or when the desktop says so: the environment that
// a launcher gave it names a desktop entry and the process itself, or it leads a unit of the user's
// service manager that is named after one. docs/applications.md tells each call's meaning here.
#pragma once

#include <CoreFoundation/CFDictionary.h>
#include <CoreServices/Files.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Serial numbers that stand for processes without being theirs; the high word is 0.
enum { kNoProcess = 0, kSystemProcess = 1, kCurrentProcess = 2 };

/// Bits of `processMode`; the others are never set here. Only an information dictionary with a true
/// "LSBackgroundOnly" says that a process works in the background only.
enum { modeOnlyBackground = 0x00000400 };

#pragma pack(push, 2)

/// What was once pointers to buffers of the caller are words that must be 0: names and files are
/// not told this way.
typedef struct ProcessInfoRec {
    UInt32 processInfoLength;  ///< the caller sets it to the record's size, 60
    UInt32 processName;
    ProcessSerialNumber processNumber;
    UInt32 processType;       ///< file type of the application
    OSType processSignature;  ///< '????' when nothing tells it
    UInt32 processMode;
    UInt32 processLocation;               ///< always 0 here
    UInt32 processSize;                   ///< bytes in memory, at most 0xFFFFFFFF
    UInt32 processFreeMem;                ///< always 0 here
    ProcessSerialNumber processLauncher;  ///< its parent; {0, kNoProcess} when that is not listed
    UInt32 processLaunchDate;             ///< ticks since the machine's start
    UInt32 processActiveTime;             ///< ticks of processor time
    UInt32 processAppSpec;
} ProcessInfoRec;

#pragma pack(pop)

enum { kProcessDictionaryIncludeAllInformationMask = 0xFFFFFFFF };

/// The caller's own serial number, never one of those above. A serial number is the same for every
/// program that asks, stays for the process's life, and is not given again until the machine starts
/// anew.
OSA_PLATFORM_EXPORT OSErr GetCurrentProcess(ProcessSerialNumber* psn);
/// The process after `psn`, which becomes its number, in the order in which they were started;
/// begins at {0, kNoProcess}. `psn` itself may have ended meanwhile. procNotFound, with {0,
/// kNoProcess}, after the last, and for a number that can be nobody's.
OSA_PLATFORM_EXPORT OSErr GetNextProcess(ProcessSerialNumber* psn);
/// Whether the two name one process; {0, kCurrentProcess} names the caller.
OSA_PLATFORM_EXPORT OSErr SameProcess(const ProcessSerialNumber* first,
                                      const ProcessSerialNumber* second, Boolean* result);

// For the next calls procNotFound says that nobody has the number.

/// paramErr when the record's length is not set or one of the words that must be 0 is not.
OSA_PLATFORM_EXPORT OSErr GetProcessInformation(const ProcessSerialNumber* psn,
                                                ProcessInfoRec* info);
/// The application's bundle, else the desktop entry that it was started by, else its program file.
/// fnfErr when that is gone or out of sight.
OSA_PLATFORM_EXPORT OSStatus GetProcessBundleLocation(const ProcessSerialNumber* psn,
                                                      FSRef* location);
/// "BundlePath" (where GetProcessBundleLocation finds it), "FileType", "FileCreator", "pid",
/// "LSBackgroundOnly" and, as far as they are known, "CFBundleIdentifier" (for a desktop entry its
/// ID), "CFBundleName", "CFBundleExecutable" (a path); the caller releases it. Null when there is
/// no such process. `infoToReturn` is not used.
OSA_PLATFORM_EXPORT CFDictionaryRef ProcessInformationCopyDictionary(
    const ProcessSerialNumber* psn, UInt32 infoToReturn) CF_RETURNS_RETAINED;

/// The process whose window has the keyboard, as the desktop tells it; procNotFound when there is
/// no desktop that tells, or nobody has it.
OSA_PLATFORM_EXPORT OSErr GetFrontProcess(ProcessSerialNumber* psn);
/// Asks the desktop to bring the process's window to the front. kCannotSetFrontProcessErr when
/// there is no desktop that can be asked, or the process has no window on it.
OSA_PLATFORM_EXPORT OSErr SetFrontProcess(const ProcessSerialNumber* psn);
/// Nothing sleeps here until it is woken: only tells whether the process is there.
OSA_PLATFORM_EXPORT OSErr WakeUpProcess(const ProcessSerialNumber* psn);

// Launching the old way

#pragma pack(push, 2)

/// A launched program's first event, the form that 'aevt' is coerced to for it (typeAppParameters);
/// `messageLength` bytes of the flattened event follow.
typedef struct AppParameters {
    struct {
        UInt16 what;       ///< kHighLevelEvent, 23
        UInt32 message;    ///< the event's class
        UInt32 when;       ///< ticks
        Point where;       ///< the event's ID, its upper half in `v`
        UInt16 modifiers;  ///< always 0 here
    } theMsgEvent;
    UInt32 eventRefCon;  ///< always 0 here
    UInt32 messageLength;
} AppParameters;

#pragma pack(pop)

enum { extendedBlock = 0x4C43 };

// clang-format off
/// Bits of `launchControlFlags`. The others have no meaning here.
enum {
    launchContinue   = 0x4000,  ///< the caller goes on, which it does in any case
    launchNoFileFlags = 0x0800,
    launchDontSwitch = 0x0200   ///< the launched program stays behind the caller
};
// clang-format on

/// What the platform's own record holds in pointers is pointers here, so its length differs.
typedef struct LaunchParamBlockRec {
    UInt32 reserved1;
    UInt16 reserved2;
    UInt16 launchBlockID;    ///< extendedBlock
    UInt32 launchEPBLength;  ///< extendedBlockLen
    UInt16 launchFileFlags;
    UInt16 launchControlFlags;
    FSSpec* launchAppSpec;                ///< the program, no alias
    ProcessSerialNumber launchProcessSN;  ///< becomes the launched process's
    UInt32 launchPreferredSize;           ///< not used; what follows becomes 0
    UInt32 launchMinimumSize;
    UInt32 launchAvailableSize;
    AppParameters* launchAppParameters;  ///< may be null. No program here waits for an Apple event
} LaunchParamBlockRec;
typedef LaunchParamBlockRec* LaunchPBPtr;

enum { extendedBlockLen = sizeof(LaunchParamBlockRec) - 12 };

/// Launches as LSOpenFromRefSpec does without documents. paramErr when the block is not marked as
/// an extended one of full length; else that call's statuses, fnfErr for a missing file.
OSA_PLATFORM_EXPORT OSErr LaunchApplication(LaunchPBPtr params);

#ifdef __cplusplus
}
static_assert(sizeof(ProcessInfoRec) == 60, "published length");
static_assert(sizeof(AppParameters) == 24, "published length");
#endif
