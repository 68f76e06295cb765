// Making scripting components: a table of entry points in place of the Mac's component dispatch,
// and what a host lets scripts do.
#pragma once

#include <OpenScripting/OSA.h>

#ifdef __cplusplus
extern "C" {
#endif

/// A component's entry points. Each has its published call's arguments, with the instance's own
/// storage in place of the instance; results are initialised before, null pointers are answered
/// before. A null entry answers errOSABadSelector, but loadFile and storeFile, which the platform
/// then does with load, compile and store.
typedef struct OSAComponentCalls {
    UInt32 size;  ///< of this record
    /// Makes an instance's storage.
    OSAError (*open)(ComponentInstance self, void** storage);
    void (*close)(void* storage);
    OSAError (*load)(void*, const AEDesc*, SInt32, OSAID*);
    OSAError (*store)(void*, OSAID, DescType, SInt32, AEDesc*);
    OSAError (*loadFile)(void*, const FSRef*, Boolean*, SInt32, OSAID*);
    OSAError (*storeFile)(void*, OSAID, DescType, SInt32, const FSRef*);
    OSAError (*execute)(void*, OSAID, OSAID, SInt32, OSAID*);
    OSAError (*executeEvent)(void*, const AppleEvent*, OSAID, SInt32, OSAID*);
    OSAError (*display)(void*, OSAID, DescType, SInt32, AEDesc*);
    OSAError (*scriptError)(void*, OSType, DescType, AEDesc*);
    OSAError (*dispose)(void*, OSAID);
    OSAError (*getScriptInfo)(void*, OSAID, OSType, SInt32*);
    OSAError (*compile)(void*, const AEDesc*, SInt32, OSAID*);
    OSAError (*copyID)(void*, OSAID, OSAID*);
    OSAError (*getSource)(void*, OSAID, DescType, AEDesc*);
    OSAError (*coerceFromDesc)(void*, const AEDesc*, SInt32, OSAID*);
    OSAError (*coerceToDesc)(void*, OSAID, DescType, SInt32, AEDesc*);
    OSAError (*getHandler)(void*, SInt32, OSAID, const AEDesc*, OSAID*);
    OSAError (*getProperty)(void*, SInt32, OSAID, const AEDesc*, OSAID*);
    OSAError (*getPropertyNames)(void*, SInt32, OSAID, AEDescList*);
    OSAError (*getHandlerNames)(void*, SInt32, OSAID, AEDescList*);
    /// Called on another thread than the instance's.
    void (*interrupt)(void*);
} OSAComponentCalls;

/// What a component's shared library exports under the name "OSAComponent": its table. The built-in
/// list names the library of each language; it is loaded when the component is opened first.
typedef const OSAComponentCalls* (*OSAComponentEntry)(void);

/// Adds a component of kOSAComponentType; `name` is UTF-8. The table must outlive it. `component`
/// may be null. paramErr: a component of the subtype is there, or the table is too short.
OSA_PLATFORM_EXPORT OSErr OSARegisterComponent(OSType subType, const char* name,
                                               const OSAComponentCalls* calls,
                                               Component* component);
/// Takes it away again; badComponentInstance while instances of it are open.
OSA_PLATFORM_EXPORT OSErr OSAUnregisterComponent(Component component);

/// The subtype that the stored script in a file names, which there may be no component of.
/// errOSABadStorageType when there is only text; other statuses as OSALoadFile.
OSA_PLATFORM_EXPORT OSAError OSAGetStoredSubType(const FSRef* scriptFile, OSType* subType);
/// The text of a script file that is only text, as OSALoadFile compiles it, in 'utxt'.
/// errOSABadStorageType for a stored script, and for what is no text.
OSA_PLATFORM_EXPORT OSAError OSACopyScriptText(const FSRef* scriptFile, AEDesc* resultingText);
/// The same of bytes as a file would hold them.
OSA_PLATFORM_EXPORT OSAError OSADecodeScriptText(const void* bytes, Size length,
                                                 AEDesc* resultingText);

/// Bounds of one call into a script; 0 for none. A script that is stopped answers
/// errOSASystemError.
typedef struct OSALimits {
    UInt32 milliseconds;  ///< of running, at first 10,000
    UInt32 memoryBytes;   ///< of one instance's values, at first 256 MiB
} OSALimits;

/// For instances that are opened from now on, on any thread.
OSA_PLATFORM_EXPORT void OSASetLimits(const OSALimits* limits);
OSA_PLATFORM_EXPORT void OSAGetLimits(OSALimits* limits);
/// Is given what a script logs, a line at a time, on the thread that runs the script, which waits:
/// UTF-8 without the line's end. What it throws counts as a lack of memory.
typedef void (*OSALogProcPtr)(const char* line, void* refCon);
/// For all scripts of the process; null, as at first, leaves nothing written. What runs meanwhile
/// may still call the one from before.
OSA_PLATFORM_EXPORT void OSASetLogProc(OSALogProcPtr logProc, void* refCon);
OSA_PLATFORM_EXPORT void OSAGetLogProc(OSALogProcPtr* logProc, void** refCon);
/// Stops what runs in the instance, from another thread: it answers userCanceledErr.
OSA_PLATFORM_EXPORT void OSAInterrupt(ComponentInstance scriptingComponent);

#ifdef __cplusplus
}
#endif
