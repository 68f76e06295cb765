// What the machines of a process share.
#pragma once

#include <atomic>
#include <mutex>
#include <set>

namespace osa::script {

class Machine;

struct Machines {
    std::mutex making;  ///< contexts are made one after the other: the first sets the process up
    /// The process ends: nothing runs any more, and, as it is set while `making` is held, no
    /// context is made.
    std::atomic<bool> ending = false;
    std::mutex lock;           ///< of `alive`
    std::set<Machine*> alive;  ///< from before the context is made until the thread has gone
    std::mutex visiting;       ///< of who waits for whom
};

Machines& machines();

/// Makes the engine this process's, unless it is another's: the child of a fork has the engine's
/// locks and what waits at them as they were, but none of its threads, and must not use it. Asked
/// before any lock of the engine is taken.
bool ownsEngine();

/// Sets the engine up, once, and has the process's end stop every machine. False when that failed.
/// With `making`.
bool engineReady();

}  // namespace osa::script
