// Telling what a file that is handed over by itself holds: both forks wrapped in one file, a side
// file, a bare resource fork, or nothing of the kind.
#pragma once

#include <memory>
#include <string>

#include "platform/base/ByteSource.h"
#include "platform/files/formats/FinderInfoBytes.h"

namespace osa {

struct ForkContainer {
    enum class Kind { plain, appleDouble, appleSingle, macBinary, resourceFork };

    Kind kind = Kind::plain;
    /// MacBinary's generation, 1 to 3; 0 for every other kind.
    int generation = 0;
    std::string name;  ///< as kept inside, in the writer's own encoding; empty when not kept
    std::shared_ptr<const ByteSource> dataFork;      ///< never null
    std::shared_ptr<const ByteSource> resourceFork;  ///< never null; empty when there is none
    FinderInfoBytes finderInfo{};
};

/// Looks into `source`, which the parts keep alive. A file that only resembles a format is plain:
/// its data fork is the file. A failure only when reading fails.
Result<ForkContainer> openForkContainer(std::shared_ptr<const ByteSource> source);

}  // namespace osa
