// Component Manager: what components there are, and instances of them.
//
// Components are scripting components here (OSA/ScriptingComponents.h registers them).
#pragma once

#include <CoreServices/MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct ComponentRecord* Component;
typedef struct ComponentInstanceRecord* ComponentInstance;
typedef SInt32 ComponentResult;

/// 0 in any field: any.
typedef struct ComponentDescription {
    OSType componentType;
    OSType componentSubType;
    OSType componentManufacturer;
    UInt32 componentFlags;
    UInt32 componentFlagsMask;
} ComponentDescription;

/// The component after `aComponent` (null: the first) that meets the description; null after the
/// last.
OSA_PLATFORM_EXPORT Component FindNextComponent(Component aComponent,
                                                const ComponentDescription* looking);
/// `description` may be null; `componentName` becomes a Pascal string in a handle that the caller
/// disposes of, unless it is null. The other two are not used. invalidComponentID for null.
OSA_PLATFORM_EXPORT OSErr GetComponentInfo(Component aComponent, ComponentDescription* description,
                                           Handle componentName, Handle componentInfo,
                                           Handle componentIcon);
/// A new instance, which the caller closes; null when the component cannot be had.
OSA_PLATFORM_EXPORT ComponentInstance OpenComponent(Component aComponent);
/// The first component of the type and subtype; null when there is none.
OSA_PLATFORM_EXPORT ComponentInstance OpenDefaultComponent(OSType componentType,
                                                           OSType componentSubType);
/// Disposes of everything that the instance holds, scripts and values included. In the middle of a
/// call of it nothing more can be asked of the instance, and it ends with the call. Calls that
/// other threads make are interrupted as by OSAInterrupt, which cannot be asked for any more. So is
/// the call itself, where its handlers run on a thread of the component.
/// badComponentInstance for null; of it, as of every status, an OSErr holds the low 16 bits.
OSA_PLATFORM_EXPORT OSErr CloseComponent(ComponentInstance aComponentInstance);

#ifdef __cplusplus
}
#endif
