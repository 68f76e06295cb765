// osa: reads, lists, shows, compiles and runs Mac scripts.
#include <CoreServices/MacErrors.h>

#include <CLI/CLI.hpp>
#include <cstdio>

#include "cli/Command.h"
#include "cli/RecordFormat.h"

namespace osa::cli {

void reportError(std::string_view path, std::string_view reason) {
    std::fflush(stdout);
    const std::string line =
        "osa: " + forTerminal(std::string(path)) + ": " + std::string(reason) + "\n";
    std::fputs(line.c_str(), stderr);
}

std::string readingReason(OSStatus status) {
    switch (status) {
        case fnfErr:
            return "no such file";
        case permErr:
            return "may not be read";
        default:
            return "cannot be read (status " + std::to_string(status) + ")";
    }
}

int forEachFile(const std::vector<std::string>& files,
                const std::function<std::string(const std::string&)>& work) {
    int exitStatus = kAllWell;
    for (const std::string& file : files) {
        const std::string reason = work(file);
        if (reason.empty()) continue;
        reportError(file, reason);
        exitStatus = kSomethingFailed;
    }
    return exitStatus;
}

}  // namespace osa::cli

int main(int argc, char** argv) {
    CLI::App program("Reads Mac OSA scripts in all the forms they are stored in.", "osa");
    program.set_version_flag("--version", OSA_VERSION);
    program.require_subcommand(1);
    int exitStatus = osa::cli::kAllWell;
    osa::cli::addShowCommand(program, exitStatus);
    osa::cli::addResourcesCommand(program, exitStatus);
    osa::cli::addInfoCommand(program, exitStatus);
    osa::cli::addDescribeCommand(program, exitStatus);
    osa::cli::addAliasCommand(program, exitStatus);
    osa::cli::addLanguagesCommand(program, exitStatus);
    osa::cli::addSourceCommand(program, exitStatus);
    osa::cli::addCompileCommand(program, exitStatus);
    osa::cli::addRunCommand(program, exitStatus);
    osa::cli::addCallCommand(program, exitStatus);
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        // Help and version are asked for; everything else is wrong usage.
        return program.exit(error) == 0 ? osa::cli::kAllWell : osa::cli::kWrongUsage;
    }
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        osa::cli::reportError("standard output", "cannot be written");
        return osa::cli::kSomethingFailed;
    }
    return exitStatus;
}
