// The desktop's opener, which shows a file or URL with whatever the user has chosen for it.
#pragma once

#include <string>

#include "platform/base/Result.h"

namespace osa {

/// Starts xdg-open with an absolute path or a URL as its one argument. kLSApplicationNotFoundErr
/// when there is none.
Result<void> openWithDesktop(const std::string& pathOrURL);

}  // namespace osa
