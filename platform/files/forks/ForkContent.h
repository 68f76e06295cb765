// What lies behind the number of an open fork.
#pragma once

#include <CoreServices/MacErrors.h>

#include <memory>

#include "platform/base/ByteSource.h"

namespace osa {

/// Opened for reading only unless a class says otherwise.
class ForkContent {
  public:
    virtual ~ForkContent() = default;
    virtual Result<std::uint64_t> size() const = 0;
    /// eofErr when the fork ends before.
    virtual Result<void> readExactly(std::uint64_t offset, std::span<std::byte> target) const = 0;
    /// Zeros between the end and a later `offset`. `done` counts what was written, also before a
    /// failure.
    virtual Result<void> write(std::uint64_t, ByteSpan, std::uint64_t& done) {
        done = 0;
        return Failure(wrPermErr);
    }
    virtual Result<void> setSize(std::uint64_t) { return Failure(wrPermErr); }
    /// Makes what was written so far last.
    virtual Result<void> flush() { return {}; }
    /// The last call: what was written becomes the fork's.
    virtual Result<void> close() { return {}; }
};

}  // namespace osa
