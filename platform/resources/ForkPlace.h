// Where a resource file that is open for writing keeps its fork.
#pragma once

#include <memory>

#include "platform/files/Forks.h"
#include "platform/files/References.h"
#include "platform/resources/ForkLayout.h"

namespace osa {

class ForkPlace {
  public:
    virtual ~ForkPlace() = default;

    /// Where one reads the fork from, and where in it the data begins.
    struct Content {
        std::shared_ptr<const ByteSource> source;
        std::uint64_t dataStart = 0;
    };
    /// The fork as it is when the place is opened.
    virtual Result<std::shared_ptr<const ByteSource>> read() = 0;
    /// Makes `image`, which may rest on the fork as it is, the fork. On failure that is as it was,
    /// and what read() or the last write() gave still holds.
    virtual Result<Content> write(const ForkImage& image) = 0;
    /// Makes what was written last.
    virtual Result<void> flush() = 0;
    /// Whether this is where `file` keeps its fork. A file's other names share its data fork, but
    /// not a resource fork that lies beside it.
    virtual bool isOf(const Located& file, ForkKind fork) const = 0;
};

/// errFSBadForkName: neither fork's name.
Result<ForkKind> forkOfName(UniCharCount length, const UniChar* name);

/// opWrErr: somebody in this process has the fork open for writing; wrPermErr, wPrErr: not allowed;
/// notAFileErr.
Result<std::unique_ptr<ForkPlace>> openForkPlace(const Located& file, ForkKind fork);

/// Makes an empty data fork an empty resource file; dupFNErr when it is not empty.
Result<void> createDataForkMap(const FSRef& file, const ForkImage& image);

}  // namespace osa
