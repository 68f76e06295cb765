// Writing resource forks to where they are kept.
#pragma once

#include <memory>

#include "platform/base/ByteSource.h"
#include "platform/files/References.h"

namespace osa {

/// Makes `fork` the file's resource fork, in the place where it has one (an attribute without the
/// room gives it to a "._" side file), else in a "._" side file; an empty one empties all places
/// that keep one. Nothing else of what keeps it changes. `fork` may rest on the old fork, and is
/// read in pieces. Whoever reads meanwhile, or after a crash, finds the old fork or the new one;
/// after a failure it is the old.
/// notAFileErr: not a regular file; dupFNErr: the side file's name is another object's;
/// fileBoundsErr: AppleDouble cannot express the size; dskFulErr, afpAccessDenied, wPrErr and the
/// like as the system says.
Result<void> writeResourceFork(const FSRef& file, const std::shared_ptr<const ByteSource>& fork);

/// Whether writeResourceFork may be expected to be allowed: wrPermErr or wPrErr when it is not.
Result<void> mayWriteResourceFork(const Located& file);

enum class OldFork { kept, replaced };

/// writeResourceFork. dupFNErr, too, when the file has a fork of some length, which shall be kept.
Result<void> createResourceFork(const FSRef& file, ByteSpan fork, OldFork old);

}  // namespace osa
