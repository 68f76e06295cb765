// osa info: what the catalog and the forks tell of files and folders.
#include <CoreServices/Files.h>
#include <CoreServices/MacErrors.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "cli/Command.h"
#include "cli/FileFacts.h"
#include "cli/RecordFormat.h"

namespace osa::cli {
namespace {

struct InfoOptions {
    bool json = false;
    std::vector<std::string> files;
};

/// Empty when all went well.
std::string printFacts(const std::string& file, bool asJson) {
    FSRef ref;
    OSStatus status = FSPathMakeRef(reinterpret_cast<const UInt8*>(file.c_str()), &ref, nullptr);
    Json facts;
    if (status == noErr) status = gatherFacts(ref, file, facts);
    if (status != noErr) return readingReason(status);
    const std::string text = asJson ? forTerminal(facts.dump()) + "\n" : factsAsText(facts);
    std::fwrite(text.data(), 1, text.size(), stdout);
    return {};
}

}  // namespace

void addInfoCommand(CLI::App& program, int& exitStatus) {
    auto options = std::make_shared<InfoOptions>();
    CLI::App* const command = program.add_subcommand(
        "info", "Show type, creator, flags, dates and forks of files, and where they are kept");
    command->add_flag("--json", options->json, "One JSON object a line for each file");
    command->add_option("files", options->files, "Files and folders; links are followed")
        ->required()
        ->type_name("FILE");
    command->callback([options, &exitStatus] {
        exitStatus = forEachFile(options->files, [&](const std::string& file) {
            return printFacts(file, options->json);
        });
    });
}

}  // namespace osa::cli
