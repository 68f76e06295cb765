// Resource forks that lie in a file by themselves: telling them from other files.
#pragma once

#include "platform/base/ByteSource.h"

namespace osa {

/// Whether header and map head of a resource fork are where they should be. Its maker leaves no
/// magic number, so every offset has to agree.
Result<bool> isResourceFork(const ByteSource& source);

/// Whether it may be the resource fork of the file whose name it has: that, or nothing yet.
Result<bool> isBareFork(const ByteSource& source);

/// Bare Finder information is at least the basic half.
inline constexpr std::uint64_t kShortestBareInfo = 16;

}  // namespace osa
