// osa compile: compiles a script and stores it.
#include <CoreServices/MacErrors.h>
#include <OSA/ScriptingComponents.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "cli/Command.h"
#include "cli/ResourceEdits.h"
#include "cli/ResourceSelector.h"
#include "cli/scripts/CompileOutput.h"
#include "cli/scripts/ScriptInput.h"

namespace osa::cli {
namespace {

struct CompileOptions {
    std::string language;
    std::string output = "a.scpt";
    std::string resource;
    std::string type;
    std::string creator;
    ScriptInput input;
    OSALimits limits{};
    bool isRunOnly = false;
};

std::string writingReason(OSStatus status) {
    switch (status) {
        case noErr:
            return {};
        case fLckdErr:
            return "is locked, or may not be written";
        case notAFileErr:
            return "is a folder or a device";
        case fileBoundsErr:
            return "is longer than a script may be";
        case dskFulErr:
            return "the volume is full";
        case resAttrErr:
            return "its old script is protected";
        default:
            return "cannot be written (status " + std::to_string(status) + ")";
    }
}

/// Statuses of the language, not of the file.
bool isOfScript(OSAError status) {
    return status == memFullErr ||
           (errOSADataFormatTooNew <= status && status <= errOSASystemError);
}

Problem storeResource(const ScriptSession& session, const CompileOptions& options, SInt32 mode) {
    const auto selector = parseResourceSelector(options.resource);
    SessionDesc stored;
    const OSAError status =
        OSAStore(session.component(), session.script(), typeOSAGenericStorage, mode, &stored.desc);
    if (status != noErr) return {options.input.name(), session.makingReason(status)};
    ResourceEdit edit;
    edit.type = selector->type;
    edit.id = *selector->id;
    edit.value = stored.bytes();
    return {options.output, applyResourceEdits(options.output, {edit})};
}

Problem storeDataFork(const ScriptSession& session, const CompileOptions& options, SInt32 mode,
                      const CompileOutput& output) {
    const OSAError status = OSAStoreFile(session.component(), session.script(),
                                         typeOSAGenericStorage, mode, &output.ref());
    if (isOfScript(status)) return {options.input.name(), session.makingReason(status)};
    return {output.file(), writingReason(status)};
}

/// The codes that were asked for; a file without a type is a script's.
OSStatus giveCodes(const CompileOptions& options, const FSRef& file) {
    // OSAStoreFile gives the type where it can.
    if (options.resource.empty() && options.type.empty() && options.creator.empty()) return noErr;
    FSCatalogInfo info{};
    OSErr status = FSGetCatalogInfo(&file, kFSCatInfoFinderInfo, &info, nullptr, nullptr, nullptr);
    if (status != noErr) return status;
    const auto codeOf = [](const std::string& text) { return parseResourceSelector(text)->type; };
    FInfo wanted = info.finderInfo;
    if (wanted.fdType == 0) wanted.fdType = 'osas';
    if (!options.type.empty()) wanted.fdType = codeOf(options.type);
    if (!options.creator.empty()) wanted.fdCreator = codeOf(options.creator);
    if (wanted.fdType == info.finderInfo.fdType && wanted.fdCreator == info.finderInfo.fdCreator)
        return noErr;
    info.finderInfo = wanted;
    return FSSetCatalogInfo(&file, kFSCatInfoFinderInfo, &info);
}

Problem store(const ScriptSession& session, const CompileOptions& options) {
    const SInt32 mode = options.isRunOnly ? kOSAModePreventGetSource : kOSAModeNull;
    CompileOutput output(options.output);
    if (std::string reason = output.open(); !reason.empty()) return {options.output, reason};
    Problem problem = options.resource.empty() ? storeDataFork(session, options, mode, output)
                                               : storeResource(session, options, mode);
    if (!problem) problem = {options.output, writingReason(giveCodes(options, output.ref()))};
    if (!problem) output.keep();
    return problem;
}

Problem compile(CompileOptions& options) {
    if (Problem problem = options.input.readStandardInput()) return problem;
    OSASetLimits(&options.limits);
    ScriptSession session;
    if (std::string reason = session.open(options.language); !reason.empty())
        return {options.input.name(), reason};
    Problem problem = options.input.load(session);
    return problem ? problem : store(session, options);
}

/// What keeps CLI11 from taking a wrong option.
std::string checkResource(const std::string& text) {
    const auto selector = parseResourceSelector(text);
    return selector && selector->id ? std::string() : "TYPE:ID is wanted, as in scpt:128";
}

std::string checkCode(const std::string& text) {
    const auto selector = parseResourceSelector(text);
    return selector && !selector->id ? std::string() : "four characters are wanted, as in osas";
}

std::string checkOutput(const std::string& text) {
    return CompileOutput::isNamed(text, ".app")
               ? "applications are not made here: what starts them is a program of the Mac"
               : std::string();
}

void checkForm(const CompileOptions& options) {
    const bool isForFiles =
        !options.resource.empty() || !options.type.empty() || !options.creator.empty();
    if (isForFiles && CompileOutput::isBundleName(options.output))
        throw CLI::ValidationError("--resource, --type and --creator are for files, not bundles");
}

void addFormOptions(CLI::App& command, CompileOptions& options) {
    command.add_flag("-x,--run-only", options.isRunOnly, "Store without the source");
    command.add_option("-r,--resource", options.resource, "Store as a resource")
        ->type_name("TYPE:ID")
        ->check(checkResource);
    command.add_option("-t,--type", options.type, "Type of the file; osas where it has none")
        ->type_name("CODE")
        ->check(checkCode);
    command.add_option("-c,--creator", options.creator, "Creator of the file")
        ->type_name("CODE")
        ->check(checkCode);
    OSAGetLimits(&options.limits);
    command.add_option("--memory", options.limits.memoryBytes, "Memory for compiling; 0: any")
        ->type_name("BYTES");
}

}  // namespace

void addCompileCommand(CLI::App& program, int& exitStatus) {
    auto options = std::make_shared<CompileOptions>();
    CLI::App* const command = program.add_subcommand("compile", "Compile a script and store it");
    command->add_option("-l,--language", options->language, "Name or subtype of the language")
        ->type_name("LANGUAGE");
    command
        ->add_option("-o,--output", options->output,
                     "A file, or a bundle when it ends in .scptd; else a.scpt")
        ->type_name("OUT")
        ->check(checkOutput);
    addFormOptions(*command, *options);
    command->add_option("-e", options->input.lines, "A line, before the files; may be repeated")
        ->type_name("TEXT")
        ->allow_extra_args(false);
    command
        ->add_option("files", options->input.files,
                     "Text or stored scripts, joined; - is standard input, as is none")
        ->type_name("FILE");
    command->callback([options, &exitStatus] {
        checkForm(*options);
        if (!options->input.isComplete()) throw CLI::RequiredError("FILE or -e");
        const Problem problem = compile(*options);
        if (problem) reportError(problem.name, problem.reason);
        exitStatus = problem ? kSomethingFailed : kAllWell;
    });
}

}  // namespace osa::cli
