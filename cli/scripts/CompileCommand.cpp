// osa compile: compiles a script and stores it.
#include <CoreServices/MacErrors.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>

#include "cli/Command.h"
#include "cli/ResourceEdits.h"
#include "cli/ResourceSelector.h"
#include "cli/scripts/ScriptSession.h"

namespace osa::cli {
namespace {

struct CompileOptions {
    std::string language;
    std::string output = "a.scpt";
    std::string resource;
    std::vector<std::string> lines;
    std::string file;
    bool isRunOnly = false;
};

OSStatus refOf(const std::string& path, FSRef& ref) {
    return FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), &ref, nullptr);
}

/// A file that is taken away again unless it was there before or is kept.
class OutputFile {
  public:
    explicit OutputFile(const std::string& path) : path_(path) {}
    ~OutputFile() {
        std::error_code ignored;
        if (isNew_ && !isKept_) std::filesystem::remove(path_, ignored);
    }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    std::string open(FSRef& ref) {
        if (refOf(path_, ref) != noErr) {
            isNew_ = std::ofstream(path_, std::ios::app).good();
            if (!isNew_) return "cannot be made";
        }
        const OSStatus status = refOf(path_, ref);
        return status == noErr ? std::string() : readingReason(status);
    }
    void keep() { isKept_ = true; }

  private:
    std::string path_;
    bool isNew_ = false;
    bool isKept_ = false;
};

std::string writingReason(OSStatus status) {
    switch (status) {
        case noErr:
            return {};
        case fLckdErr:
            return "is locked, or may not be written";
        default:
            return "cannot be written (status " + std::to_string(status) + ")";
    }
}

std::string storeResource(const ScriptSession& session, const CompileOptions& options, SInt32 mode,
                          const FSRef& file) {
    const auto selector = parseResourceSelector(options.resource);
    SessionDesc stored;
    const OSAError status =
        OSAStore(session.component(), session.script(), typeOSAGenericStorage, mode, &stored.desc);
    if (status != noErr) return session.reason(status);
    ResourceEdit edit;
    edit.type = selector->type;
    edit.id = *selector->id;
    edit.value = stored.bytes();
    if (std::string reason = applyResourceEdits(options.output, {edit}); !reason.empty())
        return reason;
    FSCatalogInfo info{};
    OSErr told = FSGetCatalogInfo(&file, kFSCatInfoFinderInfo, &info, nullptr, nullptr, nullptr);
    if (told != noErr || info.finderInfo.fdType != 0) return writingReason(told);
    info.finderInfo.fdType = 'osas';
    return writingReason(FSSetCatalogInfo(&file, kFSCatInfoFinderInfo, &info));
}

std::string store(const ScriptSession& session, const CompileOptions& options) {
    const SInt32 mode = options.isRunOnly ? kOSAModePreventGetSource : kOSAModeNull;
    OutputFile output(options.output);
    FSRef file;
    std::string reason = output.open(file);
    if (!reason.empty()) return reason;
    if (!options.resource.empty())
        reason = storeResource(session, options, mode, file);
    else
        reason = writingReason(OSAStoreFile(session.component(), session.script(),
                                            typeOSAGenericStorage, mode, &file));
    if (reason.empty()) output.keep();
    return reason;
}

int compile(const CompileOptions& options) {
    const bool isText = !options.lines.empty();
    const std::string name = isText ? "-e" : options.file;
    ScriptSession session;
    std::string reason = session.open(options.language);
    if (reason.empty())
        reason = isText ? session.loadText(CLI::detail::join(options.lines, "\n"))
                        : session.loadFile(options.file);
    if (!reason.empty()) {
        reportError(name, reason);
        return kSomethingFailed;
    }
    reason = store(session, options);
    if (!reason.empty()) reportError(options.output, reason);
    return reason.empty() ? kAllWell : kSomethingFailed;
}

/// What keeps CLI11 from taking a wrong option.
std::string checkResource(const std::string& text) {
    const auto selector = parseResourceSelector(text);
    return selector && selector->id ? std::string() : "TYPE:ID is wanted, as in scpt:128";
}

}  // namespace

void addCompileCommand(CLI::App& program, int& exitStatus) {
    auto options = std::make_shared<CompileOptions>();
    CLI::App* const command = program.add_subcommand("compile", "Compile a script and store it");
    command->add_option("-l,--language", options->language, "Name or subtype of the language")
        ->type_name("LANGUAGE");
    command->add_option("-o,--output", options->output, "Where it is stored; a.scpt if not said")
        ->type_name("OUT");
    command->add_flag("-x,--run-only", options->isRunOnly, "Store without the source");
    command->add_option("-r,--resource", options->resource, "Store as a resource")
        ->type_name("TYPE:ID")
        ->check(checkResource);
    CLI::Option* const lines =
        command->add_option("-e", options->lines, "A line of the script; may be repeated")
            ->type_name("TEXT")
            ->allow_extra_args(false);
    command->add_option("file", options->file, "Text, or a stored script")
        ->type_name("FILE")
        ->excludes(lines);
    command->callback([options, &exitStatus] {
        if (options->lines.empty() && options->file.empty()) throw CLI::RequiredError("FILE or -e");
        exitStatus = compile(*options);
    });
}

}  // namespace osa::cli
