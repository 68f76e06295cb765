// An (offset, length) pair that is tested for containment without ever adding the two.
#pragma once

#include <cstdint>

namespace osa {

struct CheckedRange {
    std::uint64_t offset = 0;
    std::uint64_t length = 0;

    /// Whether the whole range lies inside `size` bytes.
    constexpr bool fits(std::uint64_t size) const {
        return offset <= size && length <= size - offset;
    }

    /// The part of the range that lies inside `size` bytes; empty at the end when none does.
    constexpr CheckedRange clamped(std::uint64_t size) const {
        const std::uint64_t start = offset < size ? offset : size;
        const std::uint64_t room = size - start;
        return {start, length < room ? length : room};
    }
};

}  // namespace osa
