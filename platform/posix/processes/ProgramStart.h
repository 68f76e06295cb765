// Starting programs that outlive the caller.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "platform/base/Result.h"

namespace osa::posix {

struct ProgramStart {
    std::string program;                 ///< absolute path
    std::vector<std::string> arguments;  ///< the program's name first
    std::string folder;                  ///< to run in; empty, or not to be entered: the root
    /// On top of the caller's environment.
    std::vector<std::pair<std::string, std::string>> variables;
    std::vector<std::string> withoutVariables;
    /// A variable that becomes the process's own number; empty: none.
    std::string ownNumberVariable;
};

/// Executes the program as it is, never through a shell, in a session of its own, its standard
/// streams on /dev/null, signals as they are by default, nothing else of the caller's open. Answers
/// the process's number once the program runs. It is not the caller's child: init collects it when
/// it ends. Only a caller that takes orphans in (init of a container itself, or a process with
/// PR_SET_CHILD_SUBREAPER) gets it as a child, and has to wait for it as for any orphan. Safe in a
/// program of many threads; the host's fork handlers do not run. kLSNoExecutableErr,
/// kLSNoLaunchPermissionErr (always when the kernel runs the caller in secure mode: it has rights
/// by its own program file, with which nothing that an environment chose may run),
/// kLSExecutableIncorrectFormat, paramErr for a string with a NUL inside, memFullErr, else
/// kLSUnknownErr.
Result<std::uint32_t> startProgram(const ProgramStart& start);

/// The absolute path of an executable file: `name` itself when it is absolute, else the first in
/// the folders of $PATH; a relative one with a slash is never found. kLSNoExecutableErr, and
/// kLSNoLaunchPermissionErr for an absolute path whose file may not be executed, or not be reached.
Result<std::string> findExecutable(const std::string& name);

}  // namespace osa::posix
