// What the machines of a process share.
#pragma once

#include <mutex>
#include <set>

namespace osa::script {

class Machine;

struct Machines {
    std::mutex making;  ///< contexts are made one after the other: the first sets the process up
    std::mutex lock;    ///< of `alive`
    std::set<Machine*> alive;
    std::mutex visiting;  ///< of who waits for whom
};

Machines& machines();

/// Sets the engine up, once, and has the process's end stop every machine. False when that failed.
bool engineReady();

}  // namespace osa::script
