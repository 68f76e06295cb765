// errno values as the statuses of the classic managers.
#pragma once

#include <CoreFoundation/CFBase.h>

namespace osa::posix {

/// What was being done: a refused permission has another status for each.
enum class Intent { read, write, changeCatalog };

/// The status for `error`; ioErr for every value without one of its own. Never 0.
OSStatus statusFromErrno(int error, Intent intent = Intent::read);

}  // namespace osa::posix
