// Starts xdg-open, which asks the desktop that it runs on.
#include "platform/services/DesktopOpener.h"

#include <CoreServices/MacErrors.h>

#include "platform/posix/processes/ProgramStart.h"
#include "platform/services/launching/LaunchVariables.h"

namespace osa {

Result<void> openWithDesktop(const std::string& pathOrURL, bool mayComeToFront) {
    const auto opener = posix::findExecutable("xdg-open");
    if (!opener.ok()) {
        const bool isMissing = opener.status() == kLSNoExecutableErr;
        return Failure(isMissing ? kLSApplicationNotFoundErr : opener.status());
    }
    posix::ProgramStart start;
    start.program = *opener;
    start.arguments = {"xdg-open", pathOrURL};
    start.withoutVariables = {kEntryVariable, kEntryProcessVariable};
    if (!mayComeToFront) {
        start.withoutVariables.insert(start.withoutVariables.end(),
                                      {kStartupVariable, kActivationVariable});
    }
    OSA_TRY([[maybe_unused]] const std::uint32_t process, posix::startProgram(start));
    return {};
}

}  // namespace osa
