// The modifier keys of the event that is being handled.
#pragma once

#include <CoreServices/MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

// clang-format off
enum {
    cmdKey     = 0x0100,
    shiftKey   = 0x0200,
    alphaLock  = 0x0400,
    optionKey  = 0x0800,
    controlKey = 0x1000
};
// clang-format on

/// The keys above that were down at the event which the calling thread handles, as its host told
/// (OSA/HostEvents.h); 0 when it handles none.
OSA_PLATFORM_EXPORT UInt32 GetCurrentEventKeyModifiers(void);

#ifdef __cplusplus
}
#endif
