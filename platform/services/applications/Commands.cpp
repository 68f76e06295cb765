// The commands that start applications.
#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFRef.h>
#include <CoreServices/MacErrors.h>

#include "platform/cf/url/URLObject.h"
#include "platform/posix/processes/ProgramStart.h"
#include "platform/services/applications/ApplicationKinds.h"
#include "platform/services/applications/ExecLine.h"

namespace osa {
namespace {

using Commands = Result<std::vector<Command>>;

Commands plainCommand(const std::string& program, const std::vector<std::string>& documents) {
    Command command{program, {program}, {}};
    command.arguments.insert(command.arguments.end(), documents.begin(), documents.end());
    return std::vector<Command>{std::move(command)};
}

Commands commandsOfBundle(const std::string& path, const std::vector<std::string>& documents) {
    const CFRef<CFBundleRef> bundle = bundleAt(path);
    if (!bundle) return Failure(kLSNotAnApplicationErr);
    const auto url = CFRef<CFURLRef>::Adopt(CFBundleCopyExecutableURL(bundle.get()));
    std::string program;
    if (!url || !filePathOf(url.get(), true, program)) return Failure(kLSNoExecutableErr);
    return plainCommand(program, documents);
}

/// Puts the terminal's program before the command's.
Result<Command> inTerminal(Command command) {
    std::vector<std::string> before{"xdg-terminal-exec"};
    auto terminal = posix::findExecutable(before.front());
    if (!terminal.ok()) {
        before = {"x-terminal-emulator", "-e"};
        terminal = posix::findExecutable(before.front());
    }
    if (!terminal.ok()) return Failure(kLSNoExecutableErr);
    command.arguments.front() = std::move(command.program);
    command.arguments.insert(command.arguments.begin(), before.begin(), before.end());
    command.program = *std::move(terminal);
    return command;
}

Commands commandsOfEntry(const Application& application,
                         const std::vector<std::string>& documents) {
    const auto entry = DesktopEntry::read(application.path);
    if (!entry) return Failure(kLSNotAnApplicationErr);
    const auto line = ExecLine::parse(entry->text("Exec"));
    if (!line) return Failure(kLSNoExecutableErr);
    const std::string tried = entry->text("TryExec");
    if (!tried.empty()) OSA_CHECK(posix::findExecutable(tried));
    OSA_TRY(const std::string program, posix::findExecutable(line->program()));
    std::string folder = entry->text("Path");
    if (!folder.starts_with('/')) folder.clear();
    const ExecFields fields{entry->localText("Icon", desktopLanguages()), application.name,
                            application.path};
    std::vector<Command> commands;
    for (ExecLine::Arguments& arguments : line->commands(fields, documents)) {
        Command command{program, std::move(arguments), folder};
        if (entry->isTrue("Terminal")) {
            OSA_TRY(command, inTerminal(std::move(command)));
        }
        commands.push_back(std::move(command));
    }
    return commands;
}

}  // namespace

Commands commandsOf(const Application& application, const std::vector<std::string>& documents) {
    switch (application.kind) {
        case Application::Kind::bundle:
            return commandsOfBundle(application.path, documents);
        case Application::Kind::desktopEntry:
            return commandsOfEntry(application, documents);
        case Application::Kind::program:
            break;
    }
    return plainCommand(application.path, documents);
}

}  // namespace osa
