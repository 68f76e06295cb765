// The published calls that only the generic scripting component answers.
#include <CoreServices/MacErrors.h>

#include <new>

#include "platform/osa/Components.h"
#include "platform/osa/GenericComponent.h"

namespace osa {
namespace {

/// Whether the component says that it never gave the number, as not every one can.
bool isUnknown(ComponentInstance instance, OSAID id) {
    SInt32 ignored = 0;
    return OSAGetScriptInfo(instance, id, kOSAScriptIsModified, &ignored) == errOSAInvalidID;
}

/// Runs a call that only the generic component answers.
template <typename Call>
OSAError genericCall(ComponentInstance instance, const void* result, Call call) {
    const InstanceInUse use(instance);
    if (!use) return badComponentInstance;
    if (result == nullptr) return paramErr;
    if (instance->calls != &genericCalls()) return errOSABadSelector;
    try {
        return call(*static_cast<GenericComponent*>(instance->storage));
    } catch (const std::bad_alloc&) {
        return memFullErr;
    } catch (...) {
        return errOSASystemError;
    }
}

}  // namespace
}  // namespace osa

using osa::GenericComponent;

OSAError OSAGetDefaultScriptingComponent(ComponentInstance genericScriptingComponent,
                                         ScriptingComponentSelector* scriptingSubType) {
    if (scriptingSubType != nullptr) *scriptingSubType = 0;
    return osa::genericCall(genericScriptingComponent, scriptingSubType,
                            [&](GenericComponent& generic) -> OSAError {
                                *scriptingSubType = generic.defaultSubType();
                                return noErr;
                            });
}

OSAError OSASetDefaultScriptingComponent(ComponentInstance genericScriptingComponent,
                                         ScriptingComponentSelector scriptingSubType) {
    return osa::genericCall(genericScriptingComponent, &scriptingSubType,
                            [&](GenericComponent& generic) -> OSAError {
                                return generic.setDefault(scriptingSubType).status();
                            });
}

OSAError OSAGetScriptingComponent(ComponentInstance genericScriptingComponent,
                                  ScriptingComponentSelector scriptingSubType,
                                  ComponentInstance* scriptingInstance) {
    if (scriptingInstance != nullptr) *scriptingInstance = nullptr;
    return osa::genericCall(genericScriptingComponent, scriptingInstance,
                            [&](GenericComponent& generic) -> OSAError {
                                const auto instance = generic.instanceOf(scriptingSubType);
                                if (instance) *scriptingInstance = *instance;
                                return instance.status();
                            });
}

OSAError OSAGetScriptingComponentFromStored(ComponentInstance genericScriptingComponent,
                                            const AEDesc* scriptData,
                                            ScriptingComponentSelector* scriptingSubType) {
    if (scriptingSubType != nullptr) *scriptingSubType = 0;
    return osa::genericCall(
        genericScriptingComponent, scriptingSubType, [&](GenericComponent&) -> OSAError {
            return scriptData == nullptr ? OSAError{paramErr}
                                         : osa::storedSubType(*scriptData, *scriptingSubType);
        });
}

OSAError OSAGenericToRealID(ComponentInstance genericScriptingComponent, OSAID* theScriptID,
                            ComponentInstance* theExactComponent) {
    if (theExactComponent != nullptr) *theExactComponent = nullptr;
    return osa::genericCall(genericScriptingComponent, theScriptID,
                            [&](GenericComponent& generic) -> OSAError {
                                if (theExactComponent == nullptr) return paramErr;
                                const auto real = generic.real(*theScriptID);
                                if (!real) return real.status();
                                *theScriptID = real->id;
                                *theExactComponent = real->instance;
                                return noErr;
                            });
}

OSAError OSARealToGenericID(ComponentInstance genericScriptingComponent, OSAID* theScriptID,
                            ComponentInstance theExactComponent) {
    return osa::genericCall(genericScriptingComponent, theScriptID,
                            [&](GenericComponent& generic) -> OSAError {
                                if (*theScriptID == kOSANullScript) return errOSAInvalidID;
                                if (!generic.owns(theExactComponent))
                                    return errOSAComponentMismatch;
                                if (osa::isUnknown(theExactComponent, *theScriptID))
                                    return errOSAInvalidID;
                                *theScriptID = generic.ids().add({theExactComponent, *theScriptID});
                                return noErr;
                            });
}
