// Asking the stores in order for one part of an object.
//
// The questions about one file come in a row on one thread, so each thread remembers what the
// stores said of the last object. It is believed as long as the object and every file the answers
// came from have the dates they had, which costs one status each.
//
// Answers are those of one moment as far as changes by this process go; fnfErr when it has renamed
// or deleted the object since it was found.
#pragma once

#include "platform/files/stores/ForkStore.h"

namespace osa {

/// The first non-blank Finder information; blank when nobody keeps any. A link has type and creator
/// of its own.
Result<FinderInfoBytes> findFinderInfo(const Located& object);
/// What every store said, in the order in which they are asked; nothing for what has no parts.
/// Lasts until the thread's next question.
Result<std::vector<const StoredParts*>> askEveryStore(const Located& object);
/// Files and folders may have parts, but not the root folder.
bool hasParts(const Located& object);
/// For whoever has just changed the object's parts.
void forgetLastObject();
/// The first non-empty resource fork, else an empty one that is there; null when nobody keeps any.
Result<std::shared_ptr<const StoredFork>> findResourceFork(const Located& object);

}  // namespace osa
