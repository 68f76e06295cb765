// Finding what an alias record names on this machine's disks.
#pragma once

#include <CoreServices/Files.h>

#include <string>

#include "platform/aliases/AliasRecord.h"

namespace osa {

/// Looks where the record says, then for the same path on the volume of the recorded name, then on
/// the one that the alias itself lies on. What is found there but is of another kind (a folder
/// instead of a file) is not the target. fnfErr when it is nowhere.
Result<FSRef> findAliasTarget(const AliasRecord& record, const std::string& aliasFolder);

}  // namespace osa
