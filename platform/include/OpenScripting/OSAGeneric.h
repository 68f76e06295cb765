// The generic scripting component: one instance through which scripts of every language go.
#pragma once

#include <OpenScripting/OSA.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef OSType ScriptingComponentSelector;

/// The subtype of the component that compiles and coerces for the generic one: at first that of the
/// first component registered.
OSA_PLATFORM_EXPORT OSAError OSAGetDefaultScriptingComponent(
    ComponentInstance genericScriptingComponent, ScriptingComponentSelector* scriptingSubType);
/// errOSACantOpenComponent when there is none of the subtype.
OSA_PLATFORM_EXPORT OSAError OSASetDefaultScriptingComponent(
    ComponentInstance genericScriptingComponent, ScriptingComponentSelector scriptingSubType);
/// The generic component's own instance of the subtype, which stays its.
OSA_PLATFORM_EXPORT OSAError OSAGetScriptingComponent(ComponentInstance genericScriptingComponent,
                                                      ScriptingComponentSelector scriptingSubType,
                                                      ComponentInstance* scriptingInstance);
/// The subtype that a stored script's trailer names, whether or not there is such a component.
/// errOSABadStorageType for bytes without trailer.
OSA_PLATFORM_EXPORT OSAError OSAGetScriptingComponentFromStored(
    ComponentInstance genericScriptingComponent, const AEDesc* scriptData,
    ScriptingComponentSelector* scriptingSubType);
/// From a number of the generic component to its component's own, and back. errOSAInvalidID for
/// numbers that were never given, of which the way back can tell only where the component's
/// OSAGetScriptInfo does; errOSAComponentMismatch when the instance is not the generic one's.
OSA_PLATFORM_EXPORT OSAError OSAGenericToRealID(ComponentInstance genericScriptingComponent,
                                                OSAID* theScriptID,
                                                ComponentInstance* theExactComponent);
OSA_PLATFORM_EXPORT OSAError OSARealToGenericID(ComponentInstance genericScriptingComponent,
                                                OSAID* theScriptID,
                                                ComponentInstance theExactComponent);

#ifdef __cplusplus
}
#endif
