// What every command of the program shares: its registration, and how it reports what went wrong.
#pragma once

#include <string>
#include <string_view>

namespace CLI {
class App;
}

namespace osa::cli {

/// Exit statuses, which scripts depend on.
enum ExitStatus { kAllWell = 0, kSomethingFailed = 1, kWrongUsage = 2 };

/// Writes "osa: PATH: reason" to the standard error stream.
void reportError(std::string_view path, std::string_view reason);

// Each adds its command to the program. The command's exit status goes to `exitStatus` when it ran.
void addShowCommand(CLI::App& program, int& exitStatus);
void addResourcesCommand(CLI::App& program, int& exitStatus);
void addInfoCommand(CLI::App& program, int& exitStatus);
void addDescribeCommand(CLI::App& program, int& exitStatus);
void addAliasCommand(CLI::App& program, int& exitStatus);

}  // namespace osa::cli
