// An application as the disk shows it: a bundle, a desktop entry or a bare program; finding one,
// and the command that starts it.
#pragma once

#include <CoreServices/MacTypes.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/FourCC.h"
#include "platform/base/Result.h"

namespace osa {

struct Application {
    enum class Kind { bundle, desktopEntry, program };

    Kind kind = Kind::program;
    std::string path;        ///< absolute: the bundle's folder, the entry's file, the program
    std::string identifier;  ///< UTF-8; empty when it has none
    std::string name;        ///< as people see it, UTF-8
    OSType type = FourCC("APPL");
    OSType signature = FourCC("????");
    bool isBackgroundOnly = false;
};

/// Empty and 0: any.
struct ApplicationCriteria {
    OSType signature = 0;
    std::string identifier;
    std::string name;
};

/// As LSFindApplicationForInfo says; kLSApplicationNotFoundErr.
Result<Application> findApplication(const ApplicationCriteria& criteria);
/// What lies at an absolute path; kLSNotAnApplicationErr, fnfErr.
Result<Application> applicationAt(const std::string& path);
/// The file of a desktop-entry ID (without ".desktop"), hidden entries included; none when there is
/// none.
std::optional<std::string> desktopEntryPath(std::string_view identifier);

struct Command {
    std::string program;                 ///< absolute path
    std::vector<std::string> arguments;  ///< the program's name first
    std::string folder;                  ///< to run in; empty: the user's home
};

/// The commands that open the documents (absolute paths) with the application, one unless it takes
/// only one document at a time; without documents the one that starts it. Statuses as
/// LSOpenFromRefSpec's.
Result<std::vector<Command>> commandsOf(const Application& application,
                                        const std::vector<std::string>& documents);

}  // namespace osa
