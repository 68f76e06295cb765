// The one bounds-checked reader through which every parser of outside bytes goes.
//
// A reader is a view; it owns nothing and must not outlive the bytes. Failure is sticky: once a
// read does not fit, that read and every later one give zeros or empty runs and ok() stays false,
// so the fields of a record can be read in a row and asked about once. Integers are big-endian
// unless the name says otherwise.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "platform/base/CheckedRange.h"

namespace osa {

using ByteSpan = std::span<const std::byte>;

class ByteReader {
  public:
    ByteReader() = default;
    explicit ByteReader(ByteSpan bytes) : bytes_(bytes) {}
    ByteReader(const void* bytes, std::size_t length)
        : bytes_(static_cast<const std::byte*>(bytes), length) {}

    bool ok() const { return ok_; }
    std::size_t size() const { return bytes_.size(); }
    std::size_t position() const { return position_; }
    std::size_t remaining() const { return bytes_.size() - position_; }
    bool atEnd() const { return remaining() == 0; }

    /// Marks the reader as failed, for what only the parser can see to be wrong.
    void fail() { ok_ = false; }

    std::uint8_t u8() { return static_cast<std::uint8_t>(bigEndian(1)); }
    std::uint16_t u16() { return static_cast<std::uint16_t>(bigEndian(2)); }
    std::uint32_t u24() { return static_cast<std::uint32_t>(bigEndian(3)); }
    std::uint32_t u32() { return static_cast<std::uint32_t>(bigEndian(4)); }
    std::uint64_t u64() { return bigEndian(8); }
    std::int8_t s8() { return static_cast<std::int8_t>(u8()); }
    std::int16_t s16() { return static_cast<std::int16_t>(u16()); }
    std::int32_t s32() { return static_cast<std::int32_t>(u32()); }
    FourCharCode fourCC() { return u32(); }
    std::uint16_t u16LittleEndian() { return static_cast<std::uint16_t>(littleEndian(2)); }
    std::uint32_t u32LittleEndian() { return static_cast<std::uint32_t>(littleEndian(4)); }
    std::uint64_t u64LittleEndian() { return littleEndian(8); }
    /// Big-endian integer of 1 to 8 bytes.
    std::uint64_t bigEndian(std::size_t width) {
        std::uint64_t value = 0;
        for (const std::byte byte : bytes(width))
            value = value << 8 | std::to_integer<unsigned>(byte);
        return value;
    }
    std::uint64_t littleEndian(std::size_t width);

    /// The next byte without moving; 0 at the end, which is no failure.
    std::uint8_t peek() const;

    /// The next `length` bytes as a view; empty and failed when there are fewer.
    ByteSpan bytes(std::size_t length) {
        if (!ok_ || length > remaining()) {
            ok_ = false;
            return {};
        }
        const ByteSpan run = bytes_.subspan(position_, length);
        position_ += length;
        return run;
    }
    /// The same as characters.
    std::string_view text(std::size_t length);
    /// A length byte and that many bytes.
    std::string_view pascalString();
    ByteSpan rest() { return bytes(remaining()); }

    void skip(std::size_t length) { (void)bytes(length); }
    /// Moves to `offset` from the reader's start; past the end is a failure.
    void seek(std::size_t offset);

    /// A reader confined to `range` of this one's bytes, counted from this one's start; failed when
    /// the range does not fit. This reader does not move.
    ByteReader sub(CheckedRange range) const;
    ByteReader sub(std::uint64_t offset, std::uint64_t length) const {
        return sub(CheckedRange{offset, length});
    }

  private:
    ByteSpan bytes_;
    std::size_t position_ = 0;
    bool ok_ = true;
};

inline std::string_view asText(ByteSpan bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

inline ByteSpan asBytes(std::string_view text) {
    return {reinterpret_cast<const std::byte*>(text.data()), text.size()};
}

}  // namespace osa
