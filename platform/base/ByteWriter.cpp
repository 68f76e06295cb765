// Big-endian record building.
#include "platform/base/ByteWriter.h"

#include <algorithm>
#include <cassert>

namespace osa {

ByteWriter& ByteWriter::bigEndian(std::uint64_t value, std::size_t width) {
    bytes_.resize(bytes_.size() + width);
    patch(bytes_.size() - width, value, width);
    return *this;
}

ByteWriter& ByteWriter::littleEndian(std::uint64_t value, std::size_t width) {
    for (std::size_t i = 0; i < width; ++i)
        bytes_.push_back(static_cast<std::byte>(value >> 8 * i));
    return *this;
}

ByteWriter& ByteWriter::bytes(ByteSpan run) {
    bytes_.insert(bytes_.end(), run.begin(), run.end());
    return *this;
}

ByteWriter& ByteWriter::pascalString(std::string_view run) {
    run = run.substr(0, 255);
    return u8(static_cast<std::uint8_t>(run.size())).text(run);
}

ByteWriter& ByteWriter::fill(std::size_t count, std::uint8_t value) {
    bytes_.insert(bytes_.end(), count, static_cast<std::byte>(value));
    return *this;
}

ByteWriter& ByteWriter::align(std::size_t boundary) {
    return fill((boundary - bytes_.size() % boundary) % boundary);
}

void ByteWriter::patch(std::size_t offset, std::uint64_t value, std::size_t width) {
    assert(offset <= bytes_.size() && width <= bytes_.size() - offset);
    for (std::size_t i = 0; i < width; ++i) {
        bytes_[offset + i] = static_cast<std::byte>(value >> 8 * (width - 1 - i));
    }
}

}  // namespace osa
