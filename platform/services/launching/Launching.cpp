// Starting an application, or finding that it runs.
#include "platform/services/launching/Launching.h"

#include <CoreServices/Aliases.h>
#include <CoreServices/Folders.h>
#include <CoreServices/MacErrors.h>

#include "platform/files/References.h"
#include "platform/posix/processes/ProgramStart.h"
#include "platform/services/applications/Application.h"
#include "platform/services/launching/LaunchVariables.h"
#include "platform/services/processes/ProcessApplication.h"
#include "platform/services/processes/ProcessNumbers.h"

namespace osa {
namespace {

struct Target {
    FSRef ref;
    Application application;
};

Result<bool> isInTrash(const FSRef& ref, const std::string& path) {
    FSCatalogInfo info;
    OSStatus status = FSGetCatalogInfo(&ref, kFSCatInfoVolume, &info, nullptr, nullptr, nullptr);
    if (status != noErr) return Failure(status);
    FSRef trash;
    status = FSFindFolder(info.volume, kTrashFolderType, kDontCreateFolder, &trash);
    if (status != noErr) return false;  // nobody has thrown anything away
    OSA_TRY(const Located folder, locate(&trash));
    return path.starts_with(folder.path() + "/");
}

Result<Target> findTarget(const FSRef& given) {
    FSRef ref = given;
    Boolean isFolder = 0;
    Boolean wasAlias = 0;
    const OSStatus status =
        FSResolveAliasFileWithMountFlags(&ref, 1, &isFolder, &wasAlias, kResolveAliasFileNoUI);
    if (status != noErr) return Failure(status);
    OSA_TRY(const Located object, locate(&ref));
    OSA_TRY(Application application, applicationAt(object.path()));
    OSA_TRY(const bool isThrownAway, isInTrash(ref, object.path()));
    if (isThrownAway) return Failure(kLSAppInTrashErr);
    return Target{ref, std::move(application)};
}

/// The application's oldest process; {0, kNoProcess} when it does not run.
Result<ProcessSerialNumber> runningProcess(const FSRef& application) {
    OSA_TRY(const auto processes, posix::processes());
    for (const posix::ProcessFacts& process : processes) {
        const auto found = applicationOf(process);
        if (!found.ok()) continue;
        const auto place = referenceToPath(found->path, nullptr);
        const bool isIt = place.ok() && FSCompareFSRefs(&*place, &application) == noErr;
        if (isIt && checkStillThere(process).ok()) return serialNumberOf(process);
    }
    return ProcessSerialNumber{0, kNoProcess};
}

std::string userHome() {
    FSRef home;
    if (FSFindFolder(kUserDomain, kCurrentUserFolderType, kDontCreateFolder, &home) != noErr) {
        return {};
    }
    const auto found = locate(&home);
    return found.ok() ? found->path() : std::string();
}

Result<std::uint32_t> start(const Application& application, const Command& command,
                            LSLaunchFlags flags) {
    posix::ProgramStart start;
    start.program = command.program;
    start.arguments = command.arguments;
    start.folder = command.folder.empty() ? userHome() : command.folder;
    if (application.kind == Application::Kind::desktopEntry) {
        start.variables = {{kEntryVariable, application.path}};
        start.ownNumberVariable = kEntryProcessVariable;
    } else {
        // What the caller was launched as, the program is not.
        start.withoutVariables = {kEntryVariable, kEntryProcessVariable};
    }
    if ((flags & kLSLaunchDontSwitch) != 0) {
        start.withoutVariables.insert(start.withoutVariables.end(),
                                      {kStartupVariable, kActivationVariable});
    }
    return posix::startProgram(start);
}

}  // namespace

Result<Launched> launch(const FSRef& application, const std::vector<std::string>& documents,
                        LSLaunchFlags flags) {
    OSA_TRY(const Target target, findTarget(application));
    // One of a tool that runs says nothing about another.
    const bool runsOnce = target.application.kind != Application::Kind::program &&
                          (flags & kLSLaunchNewInstance) == 0;
    if (runsOnce && documents.empty()) {
        OSA_TRY(const ProcessSerialNumber running, runningProcess(target.ref));
        if (!isSame(running, {0, kNoProcess})) {
            if ((flags & kLSLaunchDontSwitch) == 0) (void)SetFrontProcess(&running);
            return Launched{target.ref, running};
        }
    }
    OSA_TRY(const std::vector<Command> commands, commandsOf(target.application, documents));
    Launched launched{target.ref};
    for (const Command& command : commands) {
        OSA_TRY(const std::uint32_t id, start(target.application, command, flags));
        const auto number = serialNumberOf(id);
        if (number.ok()) launched.process = *number;
    }
    return launched;
}

}  // namespace osa
