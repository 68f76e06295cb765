// The engine's beginning and end in a process.
#include "platform/osa/javascript/machine/Machines.h"

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "platform/osa/javascript/machine/Machine.h"

namespace osa::script {
namespace {

/// The process that the engine belongs to; 0 before there was one.
std::atomic<pid_t> owner = 0;

/// How long the process's end waits for scripts.
constexpr std::chrono::seconds kLastWait{1};

bool endMachines() {
    const std::lock_guard lock(machines().lock);
    const auto until = std::chrono::steady_clock::now() + kLastWait;
    for (Machine* const machine : machines().alive) machine->interrupt();
    bool ended = true;
    for (Machine* const machine : machines().alive) ended = machine->end(until) && ended;
    return ended;
}

/// The engine's threads must be gone before the static objects that they use. Where they cannot go
/// (a built-in that takes long is not interrupted, and the helpers that a forked child has no more
/// still wait at those objects) the process ends with these in place.
void endAll(int status, void*) {
    bool ended = false;
    if (getpid() == owner) {
        {
            const std::lock_guard lock(machines().making);
            machines().ending = true;
        }
        ended = endMachines();
    }
    if (ended) return JS_ShutDown();
    std::fflush(nullptr);
    _exit(status);
}

}  // namespace

Machines& machines() {
    static auto* const everything = new Machines;
    return *everything;
}

bool ownsEngine() {
    pid_t none = 0;
    return owner.compare_exchange_strong(none, getpid()) || owner == getpid();
}

bool engineReady() {
    static const bool ready = [] {
        // Larger ones would be lent by the system in one piece before anybody can look.
        JS::SetLargeArrayBuffersEnabled(false);
        return JS_Init() && on_exit(endAll, nullptr) == 0;
    }();
    return ready;
}

}  // namespace osa::script
