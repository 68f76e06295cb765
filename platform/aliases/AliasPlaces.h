// What a record says of an object: its place on its volume, its numbers and dates.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/aliases/AliasRecord.h"
#include "platform/files/References.h"

namespace osa {

std::vector<std::string> pathComponents(std::string_view path);
std::string joinComponents(std::string path, const std::vector<std::string>& components);

/// The path in the record from the root folder on; empty when it holds none.
std::string absolutePath(const AliasRecord& record);

/// 0 where the file system keeps none.
AliasRecord::Date creationDate(const posix::FileStatus& status);

/// A whole record of an object on disk.
Result<AliasRecord> recordOf(const Located& target);
/// Adds the way from the file that will hold the alias, when both are on one volume.
Result<void> addRelation(AliasRecord& record, const Located& fromFile);
/// A record of what need not exist: "Volume:folder:leaf" in Mac Roman, a folder with ":" at its
/// end. bdNamErr when it is no full path. What exists is recorded with its own kind.
Result<AliasRecord> recordOfFullPath(std::string_view path);

}  // namespace osa
