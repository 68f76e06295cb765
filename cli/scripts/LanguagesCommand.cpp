// osa languages: the scripting components that there are.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "cli/Command.h"
#include "cli/JsonValue.h"
#include "cli/RecordFormat.h"
#include "cli/ResourceSelector.h"
#include "cli/scripts/ScriptSession.h"

namespace osa::cli {
namespace {

/// Whether an instance can be had.
bool isInstalled(const Language& language) {
    const ComponentInstance instance = OpenComponent(language.component);
    return instance != nullptr && CloseComponent(instance) == 0;
}

void list(bool json) {
    for (const Language& language : languages()) {
        const std::string subType = fourCharText(language.subType);
        const bool installed = isInstalled(language);
        if (json) {
            const Json line = {
                {"name", language.name}, {"subtype", subType}, {"installed", installed}};
            std::printf("%s\n", forTerminal(line.dump()).c_str());
        } else {
            std::printf("%-20s '%s'%s\n", forTerminal(language.name).c_str(),
                        forTerminal(subType).c_str(), installed ? "" : "  (not installed)");
        }
    }
}

}  // namespace

void addLanguagesCommand(CLI::App& program, int& exitStatus) {
    auto json = std::make_shared<bool>(false);
    CLI::App* const command =
        program.add_subcommand("languages", "List the languages whose scripts are read and run");
    command->add_flag("--json", *json, "One JSON object a line for each language");
    command->callback([json, &exitStatus] {
        list(*json);
        exitStatus = kAllWell;
    });
}

}  // namespace osa::cli
