// What the three decompressors share. Private to the expansion of resources.
#pragma once

#include <vector>

#include "platform/base/ByteReader.h"

namespace osa {

/// The bytes produced so far. The buffer grows with what is really produced, never to what a header
/// promises; writing past the promised length fails for good.
class ExpandedBytes {
  public:
    /// For `length` bytes, rounded up to words: the decompressors that think in words produce one
    /// byte too many of an odd length, which is cut off afterwards.
    explicit ExpandedBytes(std::size_t length)
        : limit_(length + (length & 1)), oddLength_((length & 1) != 0) {}

    bool ok() const { return ok_; }
    void fail() { ok_ = false; }
    std::size_t size() const { return bytes_.size(); }
    bool oddLength() const { return oddLength_; }

    void bytes(ByteSpan run) {
        if (!room(run.size())) return;
        bytes_.insert(bytes_.end(), run.begin(), run.end());
    }
    void u8(std::uint32_t value) {
        if (room(1)) bytes_.push_back(static_cast<std::byte>(value));
    }
    void u16(std::uint32_t value) {
        if (!room(2)) return;
        bytes_.push_back(static_cast<std::byte>(value >> 8));
        bytes_.push_back(static_cast<std::byte>(value));
    }
    void u32(std::uint32_t value) {
        u16(value >> 16);
        u16(value);
    }

    std::vector<std::byte> take() { return std::move(bytes_); }
    void cutTo(std::size_t length) { bytes_.resize(length); }

  private:
    bool room(std::size_t length) { return ok_ = ok_ && length <= limit_ - bytes_.size(); }

    std::size_t limit_;
    bool oddLength_;
    bool ok_ = true;
    std::vector<std::byte> bytes_;
};

/// The runs that decompressors 0 and 1 remember as they copy them, to be asked for again by number.
class StoredRuns {
  public:
    ByteSpan remember(ByteSpan run) {
        runs_.push_back(run);
        return run;
    }
    /// Fails `output` when there is no such run.
    ByteSpan at(std::size_t index, ExpandedBytes& output) const {
        if (index < runs_.size()) return runs_[index];
        output.fail();
        return {};
    }

  private:
    std::vector<ByteSpan> runs_;
};

/// The variable integer of decompressors 0 and 1: one byte below 0x80; 0xFF and four bytes; else 15
/// bits, signed, in two bytes.
std::int32_t variableInteger(ByteReader& input);

/// `value` as `width` bytes (1 or 2), `count` + 1 times.
void repeatValue(ByteReader& input, ExpandedBytes& output, int width);

// Each reads `input` to its own end and leaves both reader and output ok only when all was well
// formed.
void decompress0(ByteReader& input, ExpandedBytes& output);
void decompress1(ByteReader& input, ExpandedBytes& output);
/// `entries` and `flags` are the parameters that the header holds for this decompressor.
void decompress2(ByteReader& input, unsigned entries, unsigned flags, ExpandedBytes& output);

}  // namespace osa
