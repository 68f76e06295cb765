// Launching one application, for the calls that do.
#pragma once

#include <CoreServices/LaunchServices.h>
#include <CoreServices/Processes.h>

#include <string>
#include <vector>

#include "platform/base/Result.h"

namespace osa {

struct Launched {
    FSRef application{};
    /// {0, kNoProcess} when the process has already ended or become another user's.
    ProcessSerialNumber process{0, kNoProcess};
};

/// As LSOpenFromRefSpec says of one application; the documents are absolute paths. An alias or link
/// in the application's place is followed.
Result<Launched> launch(const FSRef& application, const std::vector<std::string>& documents,
                        LSLaunchFlags flags);

}  // namespace osa
