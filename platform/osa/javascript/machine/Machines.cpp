// The engine's beginning and end in a process.
#include "platform/osa/javascript/machine/Machines.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "platform/osa/javascript/machine/Machine.h"

namespace osa::script {
namespace {

/// The process that set the engine up.
pid_t& owner() {
    static pid_t process = 0;
    return process;
}

/// The engine's helpers must be gone before the static objects that they wait at.
void endAll(int status, void*) {
    if (getpid() != owner()) {
        // Helpers that a forked child has no more still wait at those objects: they cannot go.
        std::fflush(nullptr);
        _exit(status);
    }
    const std::lock_guard lock(machines().lock);
    bool ended = true;
    for (Machine* const machine : machines().alive) ended = machine->end() && ended;
    if (ended) JS_ShutDown();
}

}  // namespace

Machines& machines() {
    static auto* const everything = new Machines;
    return *everything;
}

bool engineReady() {
    static const bool ready = [] {
        // Larger ones would be lent by the system in one piece before anybody can look.
        owner() = getpid();
        JS::SetLargeArrayBuffersEnabled(false);
        return JS_Init() && on_exit(endAll, nullptr) == 0;
    }();
    return ready;
}

}  // namespace osa::script
