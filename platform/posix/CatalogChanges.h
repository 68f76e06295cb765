// Changes of names that overwrite nothing and can be taken back. Paths and failures as in
// FileSystem.h; links are never followed.
#pragma once

#include <optional>
#include <string>

#include "platform/posix/FileSystem.h"

namespace osa::posix {

/// dupFNErr when something has the new name, also when it got it a moment ago; diffVolErr. On file
/// systems that can neither tell in one step nor give a file two names, and for folders on those
/// that cannot tell, the name is looked up beforehand: what gets it in between is replaced.
Result<void> renameToFree(const std::string& from, const std::string& to);
/// Each gets the other's name, in one step where the file system can.
Result<void> exchangeNames(const std::string& one, const std::string& other);
/// A second name for a file, or for a link itself; dupFNErr when something has it. Not all file
/// systems can.
Result<void> addName(const std::string& file, const std::string& name);
/// Renames to "._." and six random characters in the same folder; answers the new path.
Result<std::string> moveAside(const std::string& path);
/// Dates that are given; a link's own.
Result<void> setDates(const std::string& path, std::optional<Time> modified,
                      std::optional<Time> accessed);
/// Whether the calling user may write to the object: wrPermErr, wPrErr. Links are followed.
Result<void> mayWrite(const std::string& path);

// For taking back what was done, and for what is left when all is done. These have no fault points:
// whatever made the work fail, they are tried, and nothing can be done when they fail.

/// Takes back renameToFree(to, from); what has the name by now keeps it.
void putBack(const std::string& from, const std::string& to);
void putBackAttribute(const std::string& path, const char* name, ByteSpan value);
void putBackMode(const std::string& path, std::uint32_t mode);
void putBackDates(const std::string& path, Time modified, Time accessed);
/// Takes back exchangeNames.
void exchangeBack(const std::string& one, const std::string& other);
/// Takes back addName, also when the file has lost its first name since.
void takeBackName(const std::string& file, const std::string& name);
void discard(const std::string& path);
/// A folder with all that is in it, or a file. No link is followed.
void discardTree(const std::string& path);

}  // namespace osa::posix
