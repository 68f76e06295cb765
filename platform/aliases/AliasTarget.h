// Finding what an alias record names on this machine's disks.
#pragma once

#include <CoreServices/Files.h>

#include <functional>
#include <string>

#include "platform/aliases/AliasRecord.h"

namespace osa {

/// By what something was found.
enum class FoundBy { relation, path, number, name, walk };

struct AliasTarget {
    FSRef ref{};
    /// Where it was looked for; a link there may lead somewhere else.
    std::string path;
    FoundBy by = FoundBy::path;
};

/// Which ways a search goes, and in which order.
struct SearchRules {
    enum class Walk { never, whenNothingElseFinds, always };

    bool relationFirst = true;  ///< before number and path, else behind the path
    bool numberFirst = false;   ///< before the relation, too
    bool everyVolume = false;   ///< those that this process has met
    Walk walk = Walk::whenNothingElseFinds;
    bool walkTakesNames = false;  ///< also objects of the target's name and another number
};

/// Gets what is found, no object twice; false ends the search.
using TakeTarget = std::function<bool(const AliasTarget&)>;

/// Looks, in this order: by the way from the alias to its target that the record may hold; in the
/// recorded parent folder, which is followed by its numbers where it was renamed or moved, for the
/// target's number; for the recorded path, on the volume where the record says, on the one of the
/// recorded name and on that of the alias; in the parent once more, for the number where no dates
/// are kept to confirm it, and for the name; and in a walk (AliasWalk.h).
/// What is found but is of another kind (a folder instead of a file) is not the target. A link is
/// followed, or is the target itself when it leads nowhere or to another kind.
///
/// `aliasFolder` is the folder of the file that holds the alias; empty when there is none. nsvErr:
/// nothing was found, nor was the volume; fnfErr: nothing was found.
Result<void> findAliasTargets(const AliasRecord& record, const std::string& aliasFolder,
                              const SearchRules& rules, const TakeTarget& take);
/// The first.
Result<AliasTarget> findAliasTarget(const AliasRecord& record, const std::string& aliasFolder,
                                    const SearchRules& rules);

}  // namespace osa
