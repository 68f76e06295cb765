// Work in a child process that can harm nothing but itself: scripts run in it.
#pragma once

#include <OSA/ScriptingComponents.h>

#include <functional>
#include <string>

namespace osa::cli {

struct ConfinedOutcome {
    int exitStatus = 0;
    std::string reason;  ///< why the child ended before it was done; else empty
};

/// Runs `work`, which answers an exit status, in a child without network, without starting programs
/// and without core files, its processor time and address space bounded by the limits. `work` calls
/// what it is given when the time begins to count; after twice the time limit the child is killed.
ConfinedOutcome runConfined(const OSALimits& limits,
                            const std::function<int(const std::function<void()>& begin)>& work);

}  // namespace osa::cli
