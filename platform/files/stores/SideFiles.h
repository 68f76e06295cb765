// What the stores that use side files share.
#pragma once

#include "platform/files/stores/ForkStore.h"

namespace osa {

/// The parts kept in an AppleDouble side file. A small one is read whole and served from memory. No
/// file, or one of another kind: nothing kept. `mayBeRefused`: a file that may not be read counts
/// as none, too.
Result<StoredParts> readAppleDoubleSideFile(const std::string& path, bool mayBeRefused);

/// The same for "._name". No witness when there is nothing of the name.
Result<StoredParts> readDotUnderscoreFile(const std::string& path);

/// Whether a failure to open a side file only says that there is none.
bool meansAbsent(OSStatus status, bool mayBeRefused);

}  // namespace osa
