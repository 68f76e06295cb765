// Work in a child process that cannot do much harm: scripts run in it.
#pragma once

#include <OSA/ScriptingComponents.h>

#include <functional>
#include <string>

namespace osa::cli {

struct ConfinedOutcome {
    int exitStatus = 0;
    std::string reason;  ///< why the child ended before it was done; else empty
};

/// Where the work is, which it tells its parent.
struct ConfinedProgress {
    std::function<void()> begin;  ///< the time begins to count; before, it has half a minute
    std::function<void()> end;    ///< the time counts no longer: what is left takes what it takes
};

/// Runs `work`, which answers an exit status, in a child without network, without core files, and
/// without starting programs, signalling processes and removing, renaming or truncating files by
/// path; its processor time and memory are bounded by the limits: what it can write to by twice the
/// memory limit and what an engine needs besides (not where sanitizers watch). Opening files for
/// writing stays possible: an engine that gives scripts no files is what keeps them from that.
/// Where the kernel has no filters of calls only the bounds hold. After twice the time limit it is
/// killed; waiting for a slow reader of what it writes meanwhile counts.
ConfinedOutcome runConfined(const OSALimits& limits,
                            const std::function<int(const ConfinedProgress&)>& work);

}  // namespace osa::cli
