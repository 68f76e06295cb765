// Which application a process belongs to.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Result.h"
#include "platform/posix/processes/Processes.h"
#include "platform/services/applications/Application.h"

namespace osa {

/// The bundle that its program lies in; else the desktop entry that the environment it was started
/// with names, or the unit that it leads; else its program. fnfErr when that is gone or out of
/// sight, procNotFound when the process is.
Result<Application> applicationOf(const posix::ProcessFacts& process);

/// The desktop-entry IDs that a unit's name may stand for, the likeliest first: it is
/// app[-LAUNCHER]-ID-RANDOM.scope or app[-LAUNCHER]-ID[@RANDOM].service with escapes in the ID, and
/// some launchers escape nothing.
std::vector<std::string> entriesOfUnit(std::string_view unit);

}  // namespace osa
