// Opening an object's forks for reading, for the rooms above.
#pragma once

#include <CoreServices/Files.h>

#include <memory>

#include "platform/base/ByteSource.h"

namespace osa {

enum class ForkKind { data, resource };

/// fnfErr: the object is gone; notAFileErr: the data fork of a folder; errFSForkNotFound: no
/// resource fork. An empty fork is a source of size 0. The data fork of a symbolic link is the
/// link's text.
Result<std::shared_ptr<const ByteSource>> openForkForReading(const FSRef& ref, ForkKind fork);

}  // namespace osa
