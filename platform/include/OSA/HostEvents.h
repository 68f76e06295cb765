// What a host with an event loop of its own tells the platform of the events it handles.
#pragma once

#include <CoreFoundation/CFBase.h>

#ifdef __cplusplus
extern "C" {
#endif

/// From now on GetCurrentEventKeyModifiers answers `modifiers` (CoreServices/Events.h) to the
/// calling thread. A host sets them before it handles an event, and 0 after it.
OSA_PLATFORM_EXPORT void OSASetCurrentEventKeyModifiers(UInt32 modifiers);

#ifdef __cplusplus
}
#endif
