// An instance of the JavaScript component for a fuzz target.
#pragma once

#include <CoreServices/MacErrors.h>
#include <OSA/ScriptingComponents.h>

#include <cstdlib>

extern "C" const OSAComponentCalls* OSAComponent(void);

/// The engine's heap, which the leak finder does not look into, holds what it allocated. Asking
/// after every input would take most of the time; the replay of seeds asks.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libmozjs";
}
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() {
    return "detect_leaks=0";
}

inline ComponentInstance openComponent(UInt32 milliseconds, UInt32 memoryBytes) {
    const OSALimits limits = {milliseconds, memoryBytes};
    OSASetLimits(&limits);
    Component component = nullptr;
    if (OSARegisterComponent('fuzz', "fuzz", OSAComponent(), &component) != noErr) std::abort();
    return OpenComponent(component);
}
