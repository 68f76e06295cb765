// The user's processes as the kernel tells of them, each fact for as long as it lasts: a process
// may be gone by the next question, which is procNotFound.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Result.h"

namespace osa::posix {

struct ProcessFacts {
    std::uint32_t id = 0;
    std::uint32_t parent = 0;
    std::uint64_t started = 0;        ///< hundredths of a second since the machine's start
    std::uint64_t processorTime = 0;  ///< hundredths of a second
    std::uint64_t residentBytes = 0;
};

/// A process of another user, or one that runs no program file (kernel threads, zombies, programs
/// whose first thread has ended, other than the caller), is procNotFound. So is, but for the
/// caller, what the kernel keeps from the user himself: his processes that may not be dumped, such
/// as set-id programs and agents that guard keys.
Result<ProcessFacts> processFacts(std::uint32_t id);
/// All of the processes that processFacts tells of, in the order in which they were started. Fails
/// only when memory or descriptors have run out, or /proc cannot be read.
Result<std::vector<ProcessFacts>> processes();
/// The path of the program file; fnfErr when another file, or none, is at the path that the kernel
/// tells (it was replaced, deleted, or is another container's), or that path is too long to be
/// told.
Result<std::string> programOf(std::uint32_t id);
/// The value of a variable in the environment that the process was started with; empty when there
/// is none.
Result<std::string> startEnvironment(std::uint32_t id, std::string_view name);
/// The name of the innermost unit of the user's service manager that the process is in, escapes and
/// all; empty when it is in none.
Result<std::string> serviceUnit(std::uint32_t id);

}  // namespace osa::posix
