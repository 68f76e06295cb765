// Small helpers that the files of this room share.
#pragma once

#include <string>

#include "platform/posix/FileSystem.h"

namespace osa::posix {

Result<FileStatus> statusOfDescriptor(int descriptor);

/// All of `content` at the descriptor's position.
Result<void> writeAll(int descriptor, ByteSpan content);

/// Fills `target` from `offset`; eofErr when the file ends before.
Result<void> readAllAt(int descriptor, std::uint64_t offset, std::span<std::byte> target);

/// Gives the open file the attributes of the object at `from`, as far as the user may; those that
/// he would miss must be.
Result<void> copyAttributes(const std::string& from, int to);

/// False for a path with a NUL inside, which would name another object to the kernel.
bool isUsablePath(const std::string& path);

}  // namespace osa::posix
