// Open Scripting Architecture: what every scripting component does.
//
// Scripts, contexts, handlers and values are numbers (OSAID) of one component instance; each that a
// call gives belongs to the caller, who disposes of it. An instance is used by one thread at a
// time. Statuses of every call:
//   badComponentInstance  null instance
//   paramErr              a null pointer where one is needed
//   errOSAInvalidID       a number that the instance did not give, or of the wrong kind
//   errOSABadSelector     the component does not do this, or knows no such selector
//   memFullErr
// A result is 0, or the null descriptor, whenever the status is not noErr.
#pragma once

#include <CoreServices/AEDataModel.h>
#include <CoreServices/Components.h>
#include <CoreServices/Files.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef UInt32 OSAID;
typedef ComponentResult OSAError;

enum { kOSANullScript = 0 };

// clang-format off
enum {
    kOSAComponentType        = 'osa ',
    kOSAGenericScriptingComponentSubtype = 'scpt',  ///< routes to the other components
    typeOSAGenericStorage    = 'scpt',  ///< a stored script of any component
    typeOSADialectInfo       = 'difo'
};

/// Mode flags. Interaction is never asked for here; the others that exist are accepted.
enum {
    kOSAModeNull               = 0x00000000,
    kOSAModePreventGetSource   = 0x00000001,  ///< store without source
    kOSAModeCompileIntoContext = 0x00000002,
    kOSAModeAugmentContext     = 0x00000004,  ///< compile into the context given
    kOSAModeDisplayForHumans   = 0x00000008,  ///< text without quotes
    kOSAModeNeverInteract      = 0x00000010,
    kOSAModeCanInteract        = 0x00000020,
    kOSAModeAlwaysInteract     = 0x00000030,
    kOSAModeDontReconnect      = 0x00000080,
    kOSAModeDoRecord           = 0x00001000
};

/// Selectors of OSAGetScriptInfo; those of kind "is" answer 1 or 0.
enum {
    kOSAScriptIsModified            = 'modi',
    kOSAScriptIsTypeCompiledScript  = 'cscr',
    kOSAScriptIsTypeScriptValue     = 'valu',
    kOSAScriptIsTypeScriptContext   = 'cntx',
    kOSAScriptBestType              = 'best',  ///< the type that the value is coerced to best
    kOSACanGetSource                = 'gsrc',
    kASHasOpenHandler               = 'hsod'   ///< whether it handles 'aevt' 'odoc'
};

/// Selectors of OSAScriptError, and the types that they answer.
enum {
    kOSAErrorNumber        = 'errn',  ///< 'shor', or 'long' when that is asked for
    kOSAErrorMessage       = 'errs',  ///< text
    kOSAErrorBriefMessage  = 'errb',  ///< text
    kOSAErrorApp           = 'erap',
    kOSAErrorPartialResult = 'ptlr',
    kOSAErrorOffendingObject = 'erob',
    kOSAErrorExpectedType  = 'errt',
    kOSAErrorRange         = 'erng'   ///< a record of 'srcs' and 'srce', 'long' each
};
enum {
    keyOSASourceStart = 'srcs',  ///< units of the source before the offending text
    keyOSASourceEnd   = 'srce'
};

/// Subroutine events.
enum {
    kOSASuite           = 'ascr',
    kASAppleScriptSuite = 'ascr',
    kASSubroutineEvent  = 'psbr',
    kASLaunchEvent      = 'noop',
    keyASSubroutineName = 'snam'
};
// clang-format on

// Statuses of their own:
//   errOSABadStorageType     no stored script
//   errOSACorruptData        a stored script that is damaged
//   errOSADataFormatObsolete, errOSADataFormatTooNew
//   errOSASourceNotAvailable stored without source
//   errOSAScriptError        the script is wrong or failed: OSAScriptError tells more
//   errOSASystemError        the component failed, or a limit stopped the script
//   errOSACantOpenComponent  no component of the subtype, or no instance of it can be had
//   errOSAComponentMismatch  script and context are of different components
//   errAECoercionFail        no such type for this value

/// Loads a stored script of type typeOSAGenericStorage, or of the component's own type.
OSA_PLATFORM_EXPORT OSAError OSALoad(ComponentInstance scriptingComponent, const AEDesc* scriptData,
                                     SInt32 modeFlags, OSAID* resultingScriptID);
/// The bytes end in the trailer: subtype, version, length, FA DE DE AD.
OSA_PLATFORM_EXPORT OSAError OSAStore(ComponentInstance scriptingComponent, OSAID scriptID,
                                      DescType desiredType, SInt32 modeFlags,
                                      AEDesc* resultingScriptData);
/// Loads a stored script from a file: the resource 'scpt' 128, else the data fork, else the text in
/// it, which is compiled. `storable`, which may be null, tells whether OSAStoreFile can write it
/// back as it was.
OSA_PLATFORM_EXPORT OSAError OSALoadFile(ComponentInstance scriptingComponent,
                                         const FSRef* scriptFile, Boolean* storable,
                                         SInt32 modeFlags, OSAID* resultingScriptID);
/// Writes into the fork that the file keeps a stored script in, else into its data fork. The data
/// fork is as it was when writing fails, unless putting that back fails as well.
OSA_PLATFORM_EXPORT OSAError OSAStoreFile(ComponentInstance scriptingComponent, OSAID scriptID,
                                          DescType desiredType, SInt32 modeFlags,
                                          const FSRef* scriptFile);
/// `contextID` is what the script runs in, 0 for the script's own. The result is 0 when there is no
/// value.
OSA_PLATFORM_EXPORT OSAError OSAExecute(ComponentInstance scriptingComponent,
                                        OSAID compiledScriptID, OSAID contextID, SInt32 modeFlags,
                                        OSAID* resultingScriptValueID);
/// Sends the event to the context. errAEEventNotHandled when it has no handler.
OSA_PLATFORM_EXPORT OSAError OSAExecuteEvent(ComponentInstance scriptingComponent,
                                             const AppleEvent* theAppleEvent, OSAID contextID,
                                             SInt32 modeFlags, OSAID* resultingScriptValueID);
/// Text for people (kOSAModeDisplayForHumans), or as a script's source would have it.
OSA_PLATFORM_EXPORT OSAError OSADisplay(ComponentInstance scriptingComponent, OSAID scriptValueID,
                                        DescType desiredType, SInt32 modeFlags,
                                        AEDesc* resultingText);
/// Tells of the last call that answered errOSAScriptError. errAEDescNotFound for what is not known.
OSA_PLATFORM_EXPORT OSAError OSAScriptError(ComponentInstance scriptingComponent, OSType selector,
                                            DescType desiredType,
                                            AEDesc* resultingErrorDescription);
OSA_PLATFORM_EXPORT OSAError OSADispose(ComponentInstance scriptingComponent, OSAID scriptID);
OSA_PLATFORM_EXPORT OSAError OSAGetScriptInfo(ComponentInstance scriptingComponent, OSAID scriptID,
                                              OSType selector, SInt32* result);
/// The language's name, as text.
OSA_PLATFORM_EXPORT OSAError OSAScriptingComponentName(ComponentInstance scriptingComponent,
                                                       AEDesc* resultingScriptingComponentName);
/// A new script when `previousAndResultingScriptID` is 0, else that one is replaced in place; it
/// stays when compiling fails.
OSA_PLATFORM_EXPORT OSAError OSACompile(ComponentInstance scriptingComponent,
                                        const AEDesc* sourceData, SInt32 modeFlags,
                                        OSAID* previousAndResultingScriptID);
OSA_PLATFORM_EXPORT OSAError OSACopyID(ComponentInstance scriptingComponent, OSAID fromID,
                                       OSAID* toID);
/// errOSAInvalidID for a value.
OSA_PLATFORM_EXPORT OSAError OSAGetSource(ComponentInstance scriptingComponent, OSAID scriptID,
                                          DescType desiredType, AEDesc* resultingSourceData);
OSA_PLATFORM_EXPORT OSAError OSACoerceFromDesc(ComponentInstance scriptingComponent,
                                               const AEDesc* scriptData, SInt32 modeFlags,
                                               OSAID* resultingScriptID);
/// typeWildCard: the value's best type.
OSA_PLATFORM_EXPORT OSAError OSACoerceToDesc(ComponentInstance scriptingComponent, OSAID scriptID,
                                             DescType desiredType, SInt32 modeFlags,
                                             AEDesc* result);
/// By name as text, or by event as 'evnt' (class and ID, big-endian). paramErr for text that is no
/// name in the language; "|…|" makes one of any text. errOSAInvalidAccess when there is none.
OSA_PLATFORM_EXPORT OSAError OSAGetHandler(ComponentInstance scriptingComponent, SInt32 modeFlags,
                                           OSAID contextID, const AEDesc* handlerName,
                                           OSAID* resultingCompiledScriptID);
/// By name as text, as for handlers.
OSA_PLATFORM_EXPORT OSAError OSAGetProperty(ComponentInstance scriptingComponent, SInt32 modeFlags,
                                            OSAID contextID, const AEDesc* variableName,
                                            OSAID* resultingScriptValueID);
/// Lists of text.
OSA_PLATFORM_EXPORT OSAError OSAGetPropertyNames(ComponentInstance scriptingComponent,
                                                 SInt32 modeFlags, OSAID contextID,
                                                 AEDescList* resultingPropertyNames);
OSA_PLATFORM_EXPORT OSAError OSAGetHandlerNames(ComponentInstance scriptingComponent,
                                                SInt32 modeFlags, OSAID contextID,
                                                AEDescList* resultingHandlerNames);

#ifdef __cplusplus
}
#endif
