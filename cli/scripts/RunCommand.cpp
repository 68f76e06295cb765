// osa run and osa call: running scripts, and calling their handlers.
#include <CoreServices/MacErrors.h>
#include <OSA/ScriptingComponents.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstring>
#include <memory>

#include "cli/Command.h"
#include "cli/JsonValue.h"
#include "cli/RecordFormat.h"
#include "cli/scripts/ConfinedProcess.h"
#include "cli/scripts/ScriptInput.h"

namespace osa::cli {
namespace {

constexpr AEEventClass kCoreEventClass = 'aevt';
constexpr AEEventID kOpenApplication = 'oapp';

struct RunOptions {
    std::string language;
    OSALimits limits{};
    std::string style;
    ScriptInput input;
    std::string handler;
    std::vector<std::string> arguments;
};

template <typename T>
OSErr putValue(AEDescList& list, DescType type, T value) {
    return AEPutPtr(&list, 0, type, &value, sizeof value);
}

OSErr putText(AEDescList& list, const std::string& argument) {
    SessionDesc text;
    const OSErr status = makeText(argument, &text.desc);
    return status != noErr ? status : AEPutDesc(&list, 0, &text.desc);
}

/// Numbers and truth values as such, anything else as text.
OSErr putTyped(AEDescList& list, const std::string& argument) {
    const Json value = Json::parse(argument, nullptr, false);
    if (value.is_boolean()) return putValue(list, typeBoolean, Boolean{value.get<bool>()});
    if (value.is_number_integer()) {
        const auto number = value.get<SInt64>();
        const bool fits = value.get<double>() == static_cast<double>(static_cast<SInt32>(number));
        if (fits) return putValue(list, typeSInt32, static_cast<SInt32>(number));
    }
    if (value.is_number()) return putValue(list, typeIEEE64BitFloatingPoint, value.get<double>());
    return putText(list, argument);
}

/// An event with the arguments as its direct parameter.
OSErr makeEvent(AEEventClass eventClass, AEEventID id, const std::vector<std::string>& arguments,
                OSErr (*put)(AEDescList&, const std::string&), AppleEvent* event) {
    SessionDesc list;
    OSErr status = AECreateList(nullptr, 0, 0, &list.desc);
    for (const std::string& argument : arguments)
        if (status == noErr) status = put(list.desc, argument);
    if (status == noErr)
        status = AECreateAppleEvent(eventClass, id, nullptr, kAutoGenerateReturnID,
                                    kAnyTransactionID, event);
    if (status == noErr) status = AEPutParamDesc(event, keyDirectObject, &list.desc);
    return status;
}

/// What is printed of a value.
std::string textOf(const ScriptSession& session, const RunOptions& options, OSAID value,
                   std::string& text) {
    if (value == kOSANullScript) return {};
    std::string reason = session.display(value, options.style == "s", text);
    text += '\n';
    return reason;
}

Problem load(ScriptSession& session, const RunOptions& options) {
    std::string reason = session.open(options.language);
    return reason.empty() ? options.input.load(session) : Problem{options.input.name(), reason};
}

/// Sends the run event, which runs the whole script in languages without a handler for it; one that
/// takes no such event is executed.
std::string runScript(const ScriptSession& session, const RunOptions& options, std::string& text) {
    SessionDesc event;
    OSAError status =
        makeEvent(kCoreEventClass, kOpenApplication, options.arguments, putText, &event.desc);
    if (status != noErr) return session.reason(status);
    OSAID value = kOSANullScript;
    status =
        OSAExecuteEvent(session.component(), &event.desc, session.script(), kOSAModeNull, &value);
    if (status == errAEEventNotHandled)
        status =
            OSAExecute(session.component(), session.script(), kOSANullScript, kOSAModeNull, &value);
    return status != noErr ? session.reason(status) : textOf(session, options, value, text);
}

std::string callHandler(const ScriptSession& session, const RunOptions& options,
                        std::string& text) {
    SessionDesc event;
    SessionDesc name;
    OSAError status = makeEvent(kASAppleScriptSuite, kASSubroutineEvent, options.arguments,
                                putTyped, &event.desc);
    if (status == noErr) status = makeText(options.handler, &name.desc);
    if (status == noErr) status = AEPutParamDesc(&event.desc, keyASSubroutineName, &name.desc);
    if (status != noErr) return session.reason(status);
    OSAID value = kOSANullScript;
    status =
        OSAExecuteEvent(session.component(), &event.desc, session.script(), kOSAModeNull, &value);
    if (status == errAEEventNotHandled)
        return "has no handler '" + forTerminal(options.handler) + "'";
    return status != noErr ? session.reason(status) : textOf(session, options, value, text);
}

using Work = std::string (*)(const ScriptSession&, const RunOptions&, std::string&);

/// In the child: what is printed, or what failed.
Problem runLoaded(const RunOptions& options, Work work, const ConfinedProgress& progress,
                  std::string& text) {
    ScriptSession session;
    Problem problem = load(session, options);
    progress.begin();
    if (!problem) problem.reason = work(session, options, text);
    progress.end();
    return problem;
}

/// What the script says with console.log and its kin.
void printLine(const char* line, void*) {
    for (;;) {
        const char* const end = strchrnul(line, '\n');
        std::fputs((forTerminal({line, end}) + "\n").c_str(), stderr);
        if (*end == 0) return;
        line = end + 1;
    }
}

int runInChild(RunOptions& options, Work work) {
    if (const Problem problem = options.input.readStandardInput()) {
        reportError(problem.name, problem.reason);
        return kSomethingFailed;
    }
    OSASetLimits(&options.limits);
    OSASetLogProc(printLine, nullptr);
    const ConfinedOutcome outcome =
        runConfined(options.limits, [&](const ConfinedProgress& progress) -> int {
            std::string text;
            const Problem problem = runLoaded(options, work, progress, text);
            if (!problem)
                std::fwrite(text.data(), 1, text.size(), stdout);
            else
                reportError(problem.name, problem.reason);
            return problem ? kSomethingFailed : kAllWell;
        });
    if (!outcome.reason.empty()) reportError(options.input.name(), outcome.reason);
    return outcome.exitStatus;
}

/// The first of what is left on the command line.
std::string takeFirst(std::vector<std::string>& rest) {
    std::string first = std::move(rest.front());
    rest.erase(rest.begin());
    return first;
}

/// The arguments are the script's, whatever they look like; what is before them is the command's.
void takeRest(const CLI::App& command, RunOptions& options, bool needsHandler) {
    std::vector<std::string> rest = command.remaining();
    const bool isMarked = !rest.empty() && rest.front() == "--";
    if (isMarked) rest.erase(rest.begin());
    const bool isOption =
        !isMarked && !rest.empty() && rest.front().starts_with('-') && rest.front() != "-";
    if (isOption) throw CLI::ExtrasError(command.get_name(), {rest.front()});
    if (options.input.lines.empty() && !rest.empty()) options.input.files = {takeFirst(rest)};
    if (!options.input.isComplete()) throw CLI::RequiredError("FILE or -e");
    if (needsHandler && rest.empty()) throw CLI::RequiredError("HANDLER");
    if (needsHandler) options.handler = takeFirst(rest);
    options.arguments = std::move(rest);
}

/// Has the parser leave "--" to the command: it would go to the program if the command took no
/// positional arguments. This one takes none, so that all of them remain.
void keepMark(CLI::App& command) {
    command.add_option("arguments")
        ->description("See below; \"--\" before them ends the options")
        ->check([](const std::string&) { return std::string("is left to the command"); });
    command.validate_positionals();
}

std::shared_ptr<RunOptions> addOptions(CLI::App& command) {
    auto options = std::make_shared<RunOptions>();
    OSAGetLimits(&options->limits);
    command.prefix_command();
    keepMark(command);
    command
        .add_option("-l,--language", options->language, "Name or subtype of the text's language")
        ->type_name("LANGUAGE");
    command.add_option("-e", options->input.lines, "A line of the script; may be repeated")
        ->type_name("TEXT")
        ->allow_extra_args(false);
    command.add_option("-s,--style", options->style, "The result for people, h, or as source, s")
        ->check(CLI::IsMember({"h", "s"}));
    command.add_option("--time", options->limits.milliseconds, "Time that it may take; 0: any")
        ->type_name("MS");
    command.add_option("--memory", options->limits.memoryBytes, "Memory for its values; 0: any")
        ->type_name("BYTES");
    return options;
}

}  // namespace

void addRunCommand(CLI::App& program, int& exitStatus) {
    CLI::App* const command = program.add_subcommand("run", "Run a script and print its result");
    const auto options = addOptions(*command);
    command->footer(
        "FILE [ARG...], or -e TEXT... [ARG...]: what is behind the file is the script's.\n"
        "FILE - is standard input, as is none. console.log writes to standard error.");
    command->callback([command, options, &exitStatus] {
        takeRest(*command, *options, false);
        exitStatus = runInChild(*options, runScript);
    });
}

void addCallCommand(CLI::App& program, int& exitStatus) {
    CLI::App* const command =
        program.add_subcommand("call", "Call a handler of a script and print its result");
    const auto options = addOptions(*command);
    command->footer(
        "FILE HANDLER [ARG...], or -e TEXT... HANDLER [ARG...]: arguments are text, but numbers,\n"
        "true and false.");
    command->callback([command, options, &exitStatus] {
        takeRest(*command, *options, true);
        exitStatus = runInChild(*options, callHandler);
    });
}

}  // namespace osa::cli
