// Giving files a resource fork.
#pragma once

#include "platform/files/References.h"

namespace osa {

enum class OldFork { kept, replaced };

/// Puts `fork` into a "._" side file, beside the Finder information that is there. dupFNErr: the
/// file has a resource fork of some length, which shall be kept, or the side file's name is another
/// object's; notAFileErr; unimpErr: a side file without room (AppleDouble::withResourceFork).
Result<void> createResourceFork(const FSRef& file, ByteSpan fork, OldFork old);

}  // namespace osa
