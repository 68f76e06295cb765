// osa alias: what aliases say, and where they lead.
#include <CoreFoundation/CFRef.h>
#include <CoreServices/MacErrors.h>
#include <OSA/AliasDescription.h>

#include <CLI/CLI.hpp>
#include <array>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "cli/Command.h"
#include "cli/JsonValue.h"
#include "cli/RecordFormat.h"

namespace osa::cli {
namespace {

struct AliasOptions {
    bool json = false;
    std::vector<std::string> files;
};

std::string reasonFor(OSStatus status) {
    return status == mapReadErr ? "is no alias, or a damaged one" : readingReason(status);
}

std::string reasonForLoss(OSStatus status) {
    switch (status) {
        case fnfErr:
            return "leads nowhere: its target is not to be found";
        case nsvErr:
            return "leads nowhere: neither its target nor the volume is to be found";
        default:
            return "leads nowhere (status " + std::to_string(status) + ")";
    }
}

/// Keys in the order in which people read them.
constexpr std::array<std::array<const char*, 2>, 21> kLines = {{
    {"kind", "kind"},
    {"version", "version"},
    {"targetName", "target"},
    {"targetKind", "target is a"},
    {"parentName", "in folder"},
    {"volumeName", "volume"},
    {"server", "server"},
    {"zone", "zone"},
    {"recordedPath", "path"},
    {"classicPath", "classic path"},
    {"targetID", "number"},
    {"parentID", "parent's number"},
    {"folderIDs", "folders' numbers"},
    {"targetCreated", "created"},
    {"volumeCreated", "volume created"},
    {"type", "type"},
    {"creator", "creator"},
    {"userType", "user type"},
    {"fileSystem", "file system"},
    {"leadsTo", "leads to"},
    {"foundBy", "found by"},
}};

void printText(const std::string& file, const Json& alias) {
    std::printf("%s\n", forTerminal(file).c_str());
    for (const auto& [key, label] : kLines) {
        if (!alias.contains(key)) continue;
        const Json& value = alias.at(key);
        const std::string text = value.is_string() ? value.get<std::string>() : value.dump();
        std::printf("    %-17s%s\n", label, forTerminal(text).c_str());
    }
    if (alias.contains("levelsUp"))
        std::printf("    %-17s%d up, %d down\n", "way to target", alias.at("levelsUp").get<int>(),
                    alias.at("levelsDown").get<int>());
}

/// Empty when the alias leads to something.
std::string process(const std::string& file, bool json) {
    CFRef<CFDictionaryRef> description;
    const OSStatus status = OSACopyAliasDescription(file.c_str(), description.out());
    if (status != noErr) return reasonFor(status);
    const Json alias = jsonValue(description.get());
    if (json) {
        Json line = {{"path", toValidUTF8(file)}};
        line.update(alias);
        std::printf("%s\n", forTerminal(line.dump()).c_str());
    } else {
        printText(file, alias);
    }
    const OSStatus found = alias.at("status").get<OSStatus>();
    return found == noErr ? std::string() : reasonForLoss(found);
}

}  // namespace

void addAliasCommand(CLI::App& program, int& exitStatus) {
    auto options = std::make_shared<AliasOptions>();
    CLI::App* const command = program.add_subcommand(
        "alias", "Show what alias files, links and alias records say, and where they lead");
    command->add_flag("--json", options->json, "One JSON object a line for each alias");
    command->add_option("files", options->files, "Aliases")->required()->type_name("FILE");
    command->callback([options, &exitStatus] {
        exitStatus = forEachFile(
            options->files, [&](const std::string& file) { return process(file, options->json); });
    });
}

}  // namespace osa::cli
