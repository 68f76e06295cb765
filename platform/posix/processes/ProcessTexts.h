// The texts in which the kernel tells of a process. What is in them of names, anybody may have
// chosen.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/posix/processes/Processes.h"

namespace osa::posix {

/// A process's "stat"; none when it is not in that form.
std::optional<ProcessFacts> factsFromStat(std::string_view text);
/// What serviceUnit answers, out of a process's "cgroup".
std::string unitFromControlGroups(std::string_view text);
/// The value of the first variable of the name among texts that are each ended by a NUL.
std::string variableIn(std::string_view environment, std::string_view name);

}  // namespace osa::posix
