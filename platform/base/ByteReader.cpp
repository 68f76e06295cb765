// Bounds-checked reading.
#include "platform/base/ByteReader.h"

namespace osa {

std::uint64_t ByteReader::littleEndian(std::size_t width) {
    std::uint64_t value = 0;
    unsigned shift = 0;
    for (const std::byte byte : bytes(width)) {
        value |= std::to_integer<std::uint64_t>(byte) << shift;
        shift += 8;
    }
    return value;
}

std::uint8_t ByteReader::peek() const {
    return ok_ && remaining() > 0 ? std::to_integer<std::uint8_t>(bytes_[position_]) : 0;
}

std::string_view ByteReader::text(std::size_t length) {
    return asText(bytes(length));
}

std::string_view ByteReader::pascalString() {
    return text(u8());
}

void ByteReader::seek(std::size_t offset) {
    if (!ok_ || offset > bytes_.size()) {
        ok_ = false;
        return;
    }
    position_ = offset;
}

ByteReader ByteReader::sub(CheckedRange range) const {
    ByteReader inner;
    if (!ok_ || !range.fits(bytes_.size())) {
        inner.ok_ = false;
        return inner;
    }
    inner.bytes_ = bytes_.subspan(range.offset, range.length);
    return inner;
}

}  // namespace osa
