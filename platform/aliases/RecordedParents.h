// Following a record's numbers: volumes, folders and dates that may be those it tells of.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/aliases/AliasRecord.h"
#include "platform/posix/FileSystem.h"

namespace osa {

enum class Dates { agree, differ, notKept };
/// Old records count in whole seconds, which then have to do.
Dates compareDates(AliasRecord::Date one, AliasRecord::Date other);

/// Of a folder; none of anything else. Links are followed.
std::optional<posix::FileStatus> folderStatus(const std::string& path);

/// Whether the record knows its target's number.
bool hasNumber(const AliasRecord& record);
/// Numbers of other disks' objects mean nothing on this one.
bool canBeVolume(const AliasRecord& record, const std::string& root);

using AcceptsChild = std::function<bool(const std::string& name, const posix::FileStatus&)>;
/// The child of `folder` with this number: the one called `name`, which may be empty, else any.
std::optional<std::string> childWithNumber(const std::string& folder, const std::string& name,
                                           UInt32 number, const AcceptsChild& accepts);

/// Folders on the volume at `root` that may be the one the target was in: by their numbers from the
/// root down, and where this process has last seen one of the parent's number. `below`: the
/// components of the recorded path.
std::vector<std::string> recordedParents(const AliasRecord& record,
                                         const std::vector<std::string>& below,
                                         const std::string& root);

}  // namespace osa
