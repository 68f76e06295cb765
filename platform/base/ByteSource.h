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

/// A block of bytes that begins unset, for what is filled as a whole.
class ByteBlock {
  public:
    ByteBlock() = default;
    explicit ByteBlock(std::size_t size)
        : bytes_(std::make_unique_for_overwrite<std::byte[]>(size)), size_(size) {}

    std::span<std::byte> toFill() { return {bytes_.get(), size_}; }
    ByteSpan view() const { return {bytes_.get(), size_}; }

  private:
    std::unique_ptr<std::byte[]> bytes_;
    std::size_t size_ = 0;
};

/// Bytes owned by the source.
class MemorySource : public ByteSource {
  public:
    explicit MemorySource(ByteBlock bytes) : bytes_(std::move(bytes)) {}
    /// Keeps a copy.
    explicit MemorySource(ByteSpan bytes);
    std::uint64_t size() const override { return bytes_.view().size(); }
    Result<void> readExactly(std::uint64_t offset, std::span<std::byte> target) const override;
    ByteSpan inMemory() const override { return bytes_.view(); }

  private:
    ByteBlock bytes_;
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

/// Some bytes of a source: a view of those that are in memory anyway, which lasts as long as the
/// source, else a block of their own.
class RangeBytes {
  public:
    RangeBytes() = default;
    explicit RangeBytes(ByteSpan view) : bytes_(view) {}
    explicit RangeBytes(ByteBlock own) : own_(std::move(own)), bytes_(own_.view()) {}

    operator ByteSpan() const { return bytes_; }  // NOLINT: implicit by design
    std::size_t size() const { return bytes_.size(); }
    const std::byte* data() const { return bytes_.data(); }

  private:
    ByteBlock own_;
    ByteSpan bytes_;
};
/// eofErr when `range` does not fit, before anything is allocated.
Result<RangeBytes> readRange(const ByteSource& source, CheckedRange range);

}  // namespace osa
