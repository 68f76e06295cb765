// Starts xdg-open, which asks the desktop that it runs on.
#include "platform/services/DesktopOpener.h"

#include <CoreServices/MacErrors.h>

#include "platform/posix/processes/ProgramStart.h"

namespace osa {

Result<void> openWithDesktop(const std::string& pathOrURL) {
    const auto opener = posix::findExecutable("xdg-open");
    if (!opener.ok()) {
        const bool isMissing = opener.status() == kLSNoExecutableErr;
        return Failure(isMissing ? kLSApplicationNotFoundErr : opener.status());
    }
    posix::ProgramStart start;
    start.program = *opener;
    start.arguments = {"xdg-open", pathOrURL};
    OSA_TRY([[maybe_unused]] const std::uint32_t process, posix::startProgram(start));
    return {};
}

}  // namespace osa
