// What every command of the program shares: its registration, and how it reports what went wrong.
#pragma once

#include <CoreServices/MacTypes.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
}

namespace osa::cli {

/// Exit statuses, which scripts depend on.
enum ExitStatus { kAllWell = 0, kSomethingFailed = 1, kWrongUsage = 2 };

/// Writes "osa: PATH: reason" to the standard error stream.
void reportError(std::string_view path, std::string_view reason);

/// Why a file cannot be read.
std::string readingReason(OSStatus status);

/// Does `work` to every file and reports why it failed, which it answers, with nothing for success.
/// The exit status.
int forEachFile(const std::vector<std::string>& files,
                const std::function<std::string(const std::string& file)>& work);

// Each adds its command to the program. The command's exit status goes to `exitStatus` when it ran.
void addShowCommand(CLI::App& program, int& exitStatus);
void addResourcesCommand(CLI::App& program, int& exitStatus);
void addInfoCommand(CLI::App& program, int& exitStatus);
void addDescribeCommand(CLI::App& program, int& exitStatus);
void addAliasCommand(CLI::App& program, int& exitStatus);
void addLanguagesCommand(CLI::App& program, int& exitStatus);
void addSourceCommand(CLI::App& program, int& exitStatus);
void addCompileCommand(CLI::App& program, int& exitStatus);
void addRunCommand(CLI::App& program, int& exitStatus);
void addCallCommand(CLI::App& program, int& exitStatus);

}  // namespace osa::cli
