// The published calls: each checks what it is given and goes to its entry in the instance's table.
#include <CoreServices/MacErrors.h>
#include <OSA/ScriptingComponents.h>

#include <initializer_list>
#include <new>

#include "platform/osa/Components.h"
#include "platform/osa/ScriptFiles.h"

namespace osa {
namespace {

/// noErr when the instance is one and none of the pointers is null.
OSAError check(ComponentInstance instance, std::initializer_list<const void*> needed) {
    if (!isInstance(instance)) return badComponentInstance;
    for (const void* const pointer : needed)
        if (pointer == nullptr) return paramErr;
    return noErr;
}

/// A result is empty before the call, and whenever it failed.
void clear(OSAID* id) {
    *id = kOSANullScript;
}
void clear(SInt32* number) {
    *number = 0;
}
void clear(AEDesc* desc) {
    AEInitializeDesc(desc);
}
void drop(AEDesc* desc) {
    AEDisposeDesc(desc);
}
template <typename T>
void drop(T* result) {
    clear(result);
}

/// The entry of `instance`'s table that `Entry` points to, whatever the instance.
template <auto Entry, typename... Arguments>
OSAError enter(ComponentInstance instance, Arguments... arguments) {
    const InstanceInUse use(instance);
    if (!use) return badComponentInstance;
    const auto entry = instance->calls->*Entry;
    if (entry == nullptr) return errOSABadSelector;
    try {
        return entry(instance->storage, arguments...);
    } catch (const std::bad_alloc&) {
        return memFullErr;
    } catch (...) {
        return errOSASystemError;
    }
}

/// A call that gives `result`, its last argument; `needed` are other pointers that must not be
/// null.
template <auto Entry, typename Result, typename... Arguments>
OSAError give(ComponentInstance instance, std::initializer_list<const void*> needed, Result* result,
              Arguments... arguments) {
    if (result != nullptr) clear(result);
    OSAError status = check(instance, {result});
    if (status == noErr) status = check(instance, needed);
    if (status != noErr) return status;
    status = enter<Entry>(instance, arguments..., result);
    if (status != noErr) drop(result);
    return status;
}

using Calls = OSAComponentCalls;

/// Text as 'TEXT' when the system encoding can hold it.
OSAError textOfName(const std::string& name, AEDesc* result) {
    const auto size = static_cast<Size>(name.size());
    const OSErr status = AECoercePtr(typeUTF8Text, name.data(), size, typeChar, result);
    return status != errAECoercionFail
               ? status
               : AECoercePtr(typeUTF8Text, name.data(), size, typeUnicodeText, result);
}

}  // namespace
}  // namespace osa

using namespace osa;

OSAError OSALoad(ComponentInstance scriptingComponent, const AEDesc* scriptData, SInt32 modeFlags,
                 OSAID* resultingScriptID) {
    return give<&Calls::load>(scriptingComponent, {scriptData}, resultingScriptID, scriptData,
                              modeFlags);
}

OSAError OSAStore(ComponentInstance scriptingComponent, OSAID scriptID, DescType desiredType,
                  SInt32 modeFlags, AEDesc* resultingScriptData) {
    return give<&Calls::store>(scriptingComponent, {}, resultingScriptData, scriptID, desiredType,
                               modeFlags);
}

OSAError OSALoadFile(ComponentInstance scriptingComponent, const FSRef* scriptFile,
                     Boolean* storable, SInt32 modeFlags, OSAID* resultingScriptID) {
    Boolean canStore = 0;
    if (storable != nullptr) *storable = 0;
    if (resultingScriptID != nullptr) *resultingScriptID = kOSANullScript;
    OSAError status = check(scriptingComponent, {scriptFile, resultingScriptID});
    if (status != noErr) return status;
    const InstanceInUse use(scriptingComponent);
    if (!use) return badComponentInstance;
    status = scriptingComponent->calls->loadFile != nullptr
                 ? enter<&Calls::loadFile>(scriptingComponent, scriptFile, &canStore, modeFlags,
                                           resultingScriptID)
                 : loadScriptFile(scriptingComponent, *scriptFile, canStore, modeFlags,
                                  *resultingScriptID);
    if (status != noErr)
        *resultingScriptID = kOSANullScript;
    else if (storable != nullptr)
        *storable = canStore;
    return status;
}

OSAError OSAStoreFile(ComponentInstance scriptingComponent, OSAID scriptID, DescType desiredType,
                      SInt32 modeFlags, const FSRef* scriptFile) {
    const OSAError status = check(scriptingComponent, {scriptFile});
    if (status != noErr) return status;
    const InstanceInUse use(scriptingComponent);
    if (!use) return badComponentInstance;
    return scriptingComponent->calls->storeFile != nullptr
               ? enter<&Calls::storeFile>(scriptingComponent, scriptID, desiredType, modeFlags,
                                          scriptFile)
               : storeScriptFile(scriptingComponent, scriptID, desiredType, modeFlags, *scriptFile);
}

OSAError OSAExecute(ComponentInstance scriptingComponent, OSAID compiledScriptID, OSAID contextID,
                    SInt32 modeFlags, OSAID* resultingScriptValueID) {
    return give<&Calls::execute>(scriptingComponent, {}, resultingScriptValueID, compiledScriptID,
                                 contextID, modeFlags);
}

OSAError OSAExecuteEvent(ComponentInstance scriptingComponent, const AppleEvent* theAppleEvent,
                         OSAID contextID, SInt32 modeFlags, OSAID* resultingScriptValueID) {
    return give<&Calls::executeEvent>(scriptingComponent, {theAppleEvent}, resultingScriptValueID,
                                      theAppleEvent, contextID, modeFlags);
}

OSAError OSADisplay(ComponentInstance scriptingComponent, OSAID scriptValueID, DescType desiredType,
                    SInt32 modeFlags, AEDesc* resultingText) {
    return give<&Calls::display>(scriptingComponent, {}, resultingText, scriptValueID, desiredType,
                                 modeFlags);
}

OSAError OSAScriptError(ComponentInstance scriptingComponent, OSType selector, DescType desiredType,
                        AEDesc* resultingErrorDescription) {
    return give<&Calls::scriptError>(scriptingComponent, {}, resultingErrorDescription, selector,
                                     desiredType);
}

OSAError OSADispose(ComponentInstance scriptingComponent, OSAID scriptID) {
    const OSAError status = check(scriptingComponent, {});
    return status != noErr ? status : enter<&Calls::dispose>(scriptingComponent, scriptID);
}

OSAError OSAGetScriptInfo(ComponentInstance scriptingComponent, OSAID scriptID, OSType selector,
                          SInt32* result) {
    return give<&Calls::getScriptInfo>(scriptingComponent, {}, result, scriptID, selector);
}

OSAError OSAScriptingComponentName(ComponentInstance scriptingComponent,
                                   AEDesc* resultingScriptingComponentName) try {
    if (resultingScriptingComponentName != nullptr)
        AEInitializeDesc(resultingScriptingComponentName);
    const OSAError status = check(scriptingComponent, {resultingScriptingComponentName});
    if (status != noErr) return status;
    const InstanceInUse use(scriptingComponent);
    return use ? textOfName(scriptingComponent->component->name, resultingScriptingComponentName)
               : OSAError{badComponentInstance};
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSAError OSACompile(ComponentInstance scriptingComponent, const AEDesc* sourceData,
                    SInt32 modeFlags, OSAID* previousAndResultingScriptID) {
    const OSAError status = check(scriptingComponent, {sourceData, previousAndResultingScriptID});
    if (status != noErr) return status;
    OSAID script = *previousAndResultingScriptID;
    const OSAError compiled =
        enter<&Calls::compile>(scriptingComponent, sourceData, modeFlags, &script);
    if (compiled == noErr) *previousAndResultingScriptID = script;
    return compiled;
}

OSAError OSACopyID(ComponentInstance scriptingComponent, OSAID fromID, OSAID* toID) {
    return give<&Calls::copyID>(scriptingComponent, {}, toID, fromID);
}

OSAError OSAGetSource(ComponentInstance scriptingComponent, OSAID scriptID, DescType desiredType,
                      AEDesc* resultingSourceData) {
    return give<&Calls::getSource>(scriptingComponent, {}, resultingSourceData, scriptID,
                                   desiredType);
}

OSAError OSACoerceFromDesc(ComponentInstance scriptingComponent, const AEDesc* scriptData,
                           SInt32 modeFlags, OSAID* resultingScriptID) {
    return give<&Calls::coerceFromDesc>(scriptingComponent, {scriptData}, resultingScriptID,
                                        scriptData, modeFlags);
}

OSAError OSACoerceToDesc(ComponentInstance scriptingComponent, OSAID scriptID, DescType desiredType,
                         SInt32 modeFlags, AEDesc* result) {
    return give<&Calls::coerceToDesc>(scriptingComponent, {}, result, scriptID, desiredType,
                                      modeFlags);
}

OSAError OSAGetHandler(ComponentInstance scriptingComponent, SInt32 modeFlags, OSAID contextID,
                       const AEDesc* handlerName, OSAID* resultingCompiledScriptID) {
    return give<&Calls::getHandler>(scriptingComponent, {handlerName}, resultingCompiledScriptID,
                                    modeFlags, contextID, handlerName);
}

OSAError OSAGetProperty(ComponentInstance scriptingComponent, SInt32 modeFlags, OSAID contextID,
                        const AEDesc* variableName, OSAID* resultingScriptValueID) {
    return give<&Calls::getProperty>(scriptingComponent, {variableName}, resultingScriptValueID,
                                     modeFlags, contextID, variableName);
}

OSAError OSAGetPropertyNames(ComponentInstance scriptingComponent, SInt32 modeFlags,
                             OSAID contextID, AEDescList* resultingPropertyNames) {
    return give<&Calls::getPropertyNames>(scriptingComponent, {}, resultingPropertyNames, modeFlags,
                                          contextID);
}

OSAError OSAGetHandlerNames(ComponentInstance scriptingComponent, SInt32 modeFlags, OSAID contextID,
                            AEDescList* resultingHandlerNames) {
    return give<&Calls::getHandlerNames>(scriptingComponent, {}, resultingHandlerNames, modeFlags,
                                         contextID);
}
