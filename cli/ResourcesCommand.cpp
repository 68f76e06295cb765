// osa resources: lists the resources of files, writes one out, or changes them.
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFRef.h>
#include <CoreFoundation/CFString.h>
#include <CoreServices/MacErrors.h>
#include <OSA/ResourceListing.h>

#include <CLI/CLI.hpp>
#include <array>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/Command.h"
#include "cli/RecordFormat.h"
#include "cli/ResourceEdits.h"
#include "cli/ResourceSelector.h"

namespace osa::cli {
namespace {

struct ResourcesOptions {
    std::string only;
    bool raw = false;
    std::vector<std::pair<ResourceEdit::Kind, std::string>> edits;  // in the order given
    std::vector<std::string> files;
};

struct ListCloser {
    void operator()(OSAResourceListRef list) const { OSAResourceListClose(list); }
};
using ResourceList = std::unique_ptr<struct OSAResourceList, ListCloser>;

std::string attributeNames(UInt8 attributes) {
    struct Name {
        UInt8 bit;
        const char* name;
    };
    static constexpr std::array<Name, 6> names = {{{0x40, "system heap"},
                                                   {0x20, "purgeable"},
                                                   {0x10, "locked"},
                                                   {0x08, "protected"},
                                                   {0x04, "preload"},
                                                   {0x01, "compressed"}}};
    std::string text;
    for (const Name& each : names) {
        if ((attributes & each.bit) != 0)
            text += (text.empty() ? "" : ", ") + std::string(each.name);
    }
    return text;
}

void printLine(const OSAResourceInfo& info) {
    std::string line = "    '" + fourCharText(info.type) + "' ";
    std::array<char, 64> numbers;
    std::snprintf(numbers.data(), numbers.size(), "%6d %10u bytes", info.id, info.size);
    line += numbers.data();
    if (info.hasName) line += "  \"" + macRomanText(info.name + 1, info.name[0]) + "\"";
    if (info.attributes != 0) line += "  [" + attributeNames(info.attributes) + "]";
    if (info.status != noErr) line += "  (" + resourceReason(info.status) + ")";
    std::printf("%s\n", line.c_str());
}

/// The resources of one file that the selector takes.
std::vector<std::pair<CFIndex, OSAResourceInfo>> selected(
    OSAResourceListRef list, const std::optional<ResourceSelector>& selector) {
    std::vector<std::pair<CFIndex, OSAResourceInfo>> found;
    for (CFIndex i = 0; i < OSAResourceListGetCount(list); ++i) {
        OSAResourceInfo info;
        if (OSAResourceListGetInfo(list, i, &info) != noErr) continue;
        if (!selector || selector->matches(info.type, info.id)) found.emplace_back(i, info);
    }
    return found;
}

OSStatus writeData(OSAResourceListRef list, CFIndex index) {
    CFDataRef data = nullptr;
    const OSStatus status = OSAResourceListCopyData(list, index, true, &data);
    if (status != noErr) return status;
    const auto holder = CFRef<CFDataRef>::Adopt(data);
    const auto length = static_cast<std::size_t>(CFDataGetLength(data));
    return std::fwrite(CFDataGetBytePtr(data), 1, length, stdout) == length ? noErr : ioErr;
}

/// Empty when all went well.
std::string process(const std::string& file, const ResourcesOptions& options,
                    const std::optional<ResourceSelector>& selector) {
    OSAResourceListRef opened = nullptr;
    const OSStatus status = OSAResourceListOpen(file.c_str(), &opened);
    if (status != noErr) return resourceReason(status);
    const ResourceList list(opened);
    const auto resources = selected(opened, selector);
    if (selector && resources.empty()) return "has no such resource";
    if (options.raw) {
        if (resources.size() > 1) return "more than one resource is selected: name type and id";
        const OSStatus written = writeData(opened, resources.front().first);
        return written == noErr ? std::string() : resourceReason(written);
    }
    std::printf("%s\n", forTerminal(file).c_str());
    for (const auto& [index, info] : resources) printLine(info);
    return {};
}

int edit(const ResourcesOptions& options) {
    std::vector<ResourceEdit> edits(options.edits.size());
    for (std::size_t i = 0; i < edits.size(); ++i) {
        const auto& [kind, text] = options.edits[i];
        const std::string reason = parseResourceEdit(kind, text, edits[i]);
        if (reason.empty()) continue;
        reportError(text, reason);
        return kWrongUsage;
    }
    if (const std::string unread = readEditData(edits); !unread.empty()) {
        reportError(unread, "cannot be read");
        return kSomethingFailed;
    }
    int exitStatus = kAllWell;
    for (const std::string& file : options.files) {
        const std::string reason = applyResourceEdits(file, edits);
        if (reason.empty()) continue;
        reportError(file, reason);
        exitStatus = kSomethingFailed;
    }
    return exitStatus;
}

int resources(const ResourcesOptions& options) {
    if (!options.edits.empty()) return edit(options);
    const auto selector = parseResourceSelector(options.only);
    if (!options.only.empty() && !selector) {
        reportError(options.only, "is not TYPE or TYPE:ID");
        return kWrongUsage;
    }
    int exitStatus = kAllWell;
    for (const std::string& file : options.files) {
        const std::string reason = process(file, options, selector);
        if (reason.empty()) continue;
        reportError(file, reason);
        exitStatus = kSomethingFailed;
    }
    return exitStatus;
}

struct EditOption {
    ResourceEdit::Kind kind;
    const char* name;
    const char* value;
    const char* help;
};
constexpr std::array<EditOption, 3> kEditOptions = {
    {{ResourceEdit::Kind::set, "--set", "TYPE:ID=FILE",
      "Replace the resource's data by that of a file, or add the resource"},
     {ResourceEdit::Kind::remove, "--delete", "TYPE:ID", "Delete the resource"},
     {ResourceEdit::Kind::rename, "--rename", "TYPE:ID=NAME", "Give the resource a name"}}};

/// The values of the three options in the order in which they were given.
void collectEdits(const CLI::App& command, ResourcesOptions& options) {
    std::array<std::size_t, kEditOptions.size()> used{};
    for (const CLI::Option* const option : command.parse_order()) {
        for (std::size_t i = 0; i < kEditOptions.size(); ++i) {
            if (option->get_name() != kEditOptions[i].name) continue;
            options.edits.emplace_back(kEditOptions[i].kind, option->results()[used[i]++]);
        }
    }
}

}  // namespace

void addResourcesCommand(CLI::App& program, int& exitStatus) {
    auto options = std::make_shared<ResourcesOptions>();
    CLI::App* const command = program.add_subcommand(
        "resources",
        "List the resources of files, also of forks and containers handed over directly, or change "
        "them");
    CLI::Option* const only =
        command->add_option("--only", options->only, "Only this type, or this resource of it");
    only->type_name("TYPE[:ID]");
    command->add_flag("--raw", options->raw, "Write the one resource's bytes to standard output")
        ->needs(only);
    command->add_option("files", options->files, "Files")->required()->type_name("FILE");
    for (const EditOption& each : kEditOptions) {
        command->add_option(each.name, each.help)
            ->type_name(each.value)
            ->take_all()
            ->allow_extra_args(false)
            ->excludes(only);
    }
    command->callback([command, options, &exitStatus] {
        collectEdits(*command, *options);
        exitStatus = resources(*options);
    });
}

}  // namespace osa::cli
