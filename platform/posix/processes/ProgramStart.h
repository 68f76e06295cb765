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
/// the process's number once the program runs. It is nobody's child: no zombie stays behind. Safe
/// in a program of many threads. kLSNoExecutableErr, kLSNoLaunchPermissionErr,
/// kLSExecutableIncorrectFormat, paramErr for a string with a NUL inside, memFullErr, else
/// kLSUnknownErr.
Result<std::uint32_t> startProgram(const ProgramStart& start);

/// The absolute path of an executable file: `name` itself when it is absolute, else the first in
/// the folders of $PATH; a relative one with a slash is never found. kLSNoExecutableErr.
Result<std::string> findExecutable(const std::string& name);

}  // namespace osa::posix
