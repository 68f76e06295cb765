// Finding what an alias record names on this machine's disks.
#pragma once

#include <CoreServices/Files.h>

#include <string>

#include "platform/aliases/AliasRecord.h"

namespace osa {

struct AliasTarget {
    FSRef ref{};
    bool isElsewhere = false;  ///< not where the record says
};

/// Looks, in this order: where the record says; for the same path on the volume of the recorded
/// name; by the way from the alias to its target that the record may hold; for the same path on the
/// volume of the alias; then, in the recorded parent folder, which is followed by its number where
/// it was renamed or moved, for the target's number and at last for its name. What is found but is
/// of another kind (a folder instead of a file) is not the target. A link is followed, or is the
/// target itself when it leads nowhere or to another kind.
///
/// `aliasFolder` is the folder of the file that holds the alias; empty when there is none. nsvErr:
/// it is nowhere and neither is its volume; fnfErr: it is nowhere.
Result<AliasTarget> findAliasTarget(const AliasRecord& record, const std::string& aliasFolder);

}  // namespace osa
