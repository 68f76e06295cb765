// Builds big-endian records in memory; the counterpart of ByteReader.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/ByteReader.h"

namespace osa {

class ByteWriter {
  public:
    ByteWriter& u8(std::uint8_t value) { return bigEndian(value, 1); }
    ByteWriter& u16(std::uint16_t value) { return bigEndian(value, 2); }
    ByteWriter& u24(std::uint32_t value) { return bigEndian(value, 3); }
    ByteWriter& u32(std::uint32_t value) { return bigEndian(value, 4); }
    ByteWriter& u64(std::uint64_t value) { return bigEndian(value, 8); }
    ByteWriter& fourCC(FourCharCode value) { return u32(value); }
    /// Big-endian integer of 1 to 8 bytes; higher bits are dropped.
    ByteWriter& bigEndian(std::uint64_t value, std::size_t width);
    ByteWriter& littleEndian(std::uint64_t value, std::size_t width);
    ByteWriter& bytes(ByteSpan run);
    ByteWriter& text(std::string_view run) { return bytes(asBytes(run)); }
    /// A length byte and the text, which is cut to 255 bytes.
    ByteWriter& pascalString(std::string_view run);
    /// `count` bytes of `value`.
    ByteWriter& fill(std::size_t count, std::uint8_t value = 0);
    /// Fills with zeros up to a multiple of `boundary`.
    ByteWriter& align(std::size_t boundary);
    /// Overwrites `width` bytes at `offset`, which must have been written already.
    void patch(std::size_t offset, std::uint64_t value, std::size_t width);

    std::size_t size() const { return bytes_.size(); }
    ByteSpan view() const { return bytes_; }
    std::vector<std::byte> take() { return std::move(bytes_); }
    std::string takeText() const { return std::string(asText(bytes_)); }

  private:
    std::vector<std::byte> bytes_;
};

}  // namespace osa
