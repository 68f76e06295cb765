// osa source: the source of stored scripts.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "cli/Command.h"
#include "cli/scripts/ScriptInput.h"

namespace osa::cli {
namespace {

int printSources(ScriptInput& input) {
    return forEachFile(input.files, [&](const std::string& file) {
        const Problem problem = input.readStandardInput();
        if (problem && problem.name == file) return problem.reason;
        std::string source;
        std::string reason = input.readSource(file, source);
        if (!source.empty() && source.back() != '\n') source += '\n';
        if (reason.empty()) std::fwrite(source.data(), 1, source.size(), stdout);
        return reason;
    });
}

}  // namespace

void addSourceCommand(CLI::App& program, int& exitStatus) {
    auto input = std::make_shared<ScriptInput>();
    CLI::App* const command = program.add_subcommand("source", "Print the source of scripts");
    command
        ->add_option("files", input->files,
                     "Scripts: files and bundles; - is standard input, as is none")
        ->type_name("FILE");
    command->callback([input, &exitStatus] {
        if (!input->isComplete()) throw CLI::RequiredError("FILE");
        exitStatus = printSources(*input);
    });
}

}  // namespace osa::cli
