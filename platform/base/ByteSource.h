// Random access to bytes that may stay on disk: a fork, a file, or a block of memory.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "platform/base/ByteReader.h"
#include "platform/base/Result.h"

namespace osa {

class ByteSource {
  public:
    virtual ~ByteSource() = default;
    virtual std::uint64_t size() const = 0;
    /// Fills `target` from `offset`, all of it or a failure: eofErr when the source ends before,
    /// ioErr and the like when the system refuses.
    virtual Result<void> readExactly(std::uint64_t offset, std::span<std::byte> target) const = 0;
    /// The whole content when it is in memory anyway, else an empty span.
    virtual ByteSpan inMemory() const { return {}; }
};

/// Bytes owned by the source.
class MemorySource : public ByteSource {
  public:
    explicit MemorySource(std::vector<std::byte> bytes) : bytes_(std::move(bytes)) {}
    std::uint64_t size() const override { return bytes_.size(); }
    Result<void> readExactly(std::uint64_t offset, std::span<std::byte> target) const override;
    ByteSpan inMemory() const override { return bytes_; }

  private:
    std::vector<std::byte> bytes_;
};

/// A part of another source, which is kept alive.
class SubSource : public ByteSource {
  public:
    /// A range that does not fit is cut to what is there: side files often promise more than they
    /// hold.
    SubSource(std::shared_ptr<const ByteSource> whole, CheckedRange range)
        : whole_(std::move(whole)), range_(range.clamped(whole_->size())) {}
    std::uint64_t size() const override { return range_.length; }
    Result<void> readExactly(std::uint64_t offset, std::span<std::byte> target) const override;
    ByteSpan inMemory() const override;

  private:
    std::shared_ptr<const ByteSource> whole_;
    CheckedRange range_;
};

/// Several sources one behind the other.
class JoinedSource : public ByteSource {
  public:
    explicit JoinedSource(std::vector<std::shared_ptr<const ByteSource>> parts)
        : parts_(std::move(parts)) {}
    std::uint64_t size() const override;
    Result<void> readExactly(std::uint64_t offset, std::span<std::byte> target) const override;

  private:
    std::vector<std::shared_ptr<const ByteSource>> parts_;
};

/// `whole` with `bytes` in place of as many at `offset`, which is at most its size; longer than
/// `whole` when they reach over its end.
std::shared_ptr<const ByteSource> overlaid(std::shared_ptr<const ByteSource> whole,
                                           std::uint64_t offset, ByteSpan bytes);

/// Reads `range` into a fresh block; eofErr when it does not fit, before anything is allocated.
Result<std::vector<std::byte>> readRange(const ByteSource& source, CheckedRange range);

}  // namespace osa
