// The desktop's opener, which shows a file or URL with whatever the user has chosen for it.
#pragma once

#include <string>

#include "platform/base/Result.h"

namespace osa {

/// Starts xdg-open with an absolute path or a URL as its one argument; what it opens with comes to
/// the front by the caller's right to it, if it may. kLSApplicationNotFoundErr when there is none.
Result<void> openWithDesktop(const std::string& pathOrURL, bool mayComeToFront = true);

}  // namespace osa
