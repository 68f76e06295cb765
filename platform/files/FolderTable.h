// Interned folders and long leaf names: what lets a reference of 80 bytes stand for any path.
//
// Entries are never taken back, so the table grows with the folders that were ever named, not with
// the files in them. Safe on any thread; texts handed out stay where they are.
#pragma once

#include <cstdint>
#include <string>

#include "platform/base/Result.h"

namespace osa {

using FolderIndex = std::uint32_t;

/// The entry of an absolute path that is known to hold no links, "." or "..".
FolderIndex internRealFolder(const std::string& path);
/// The entry of the real folder at the end of any absolute path. A failure when there is none.
Result<FolderIndex> internFolder(const std::string& path);
/// The entry's path; null for an index that was never given out.
const std::string* folderPath(FolderIndex index);

/// Names that do not fit into a reference.
std::uint32_t internLongName(const std::string& name);
const std::string* longName(std::uint32_t index);

}  // namespace osa
