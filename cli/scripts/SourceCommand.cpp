// osa source: the source of stored scripts.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "cli/Command.h"
#include "cli/scripts/ScriptSession.h"

namespace osa::cli {
namespace {

/// Empty when all went well.
std::string printSource(const std::string& path) {
    ScriptSession session;
    if (std::string reason = session.open(""); !reason.empty()) return reason;
    std::string source;
    if (std::string reason = session.readSource(path, source); !reason.empty()) return reason;
    if (!source.empty() && source.back() != '\n') source += '\n';
    std::fwrite(source.data(), 1, source.size(), stdout);
    return {};
}

}  // namespace

void addSourceCommand(CLI::App& program, int& exitStatus) {
    auto files = std::make_shared<std::vector<std::string>>();
    CLI::App* const command = program.add_subcommand("source", "Print the source of scripts");
    command->add_option("files", *files, "Scripts: files and bundles")
        ->required()
        ->type_name("FILE");
    command->callback([files, &exitStatus] { exitStatus = forEachFile(*files, printSource); });
}

}  // namespace osa::cli
