// UTF-8, UTF-16 and UTF-32 as bytes, to UTF-16 units and back.
#pragma once

#include <bit>
#include <string>
#include <string_view>

#include "platform/base/ByteReader.h"

namespace osa {

enum class ByteOrder { big, little };

inline constexpr ByteOrder kHostOrder =
    std::endian::native == std::endian::big ? ByteOrder::big : ByteOrder::little;

constexpr bool isHighSurrogate(char16_t unit) {
    return (unit & 0xFC00) == 0xD800;
}
constexpr bool isLowSurrogate(char16_t unit) {
    return (unit & 0xFC00) == 0xDC00;
}
constexpr bool isSurrogate(char32_t unit) {
    return (unit & 0xFFFFF800) == 0xD800;
}

/// The character at `index` and the units it takes; an unpaired surrogate answers itself.
struct Character {
    char32_t value = 0;
    std::size_t length = 0;
};
Character characterAt(std::u16string_view units, std::size_t index);
void appendCharacter(char32_t value, std::u16string& out);
void appendUTF8(char32_t value, std::string& out);

// Decoders append; on false `out` may hold a part.
bool decodeUTF8(std::string_view bytes, std::u16string& out);
bool decodeUTF16(ByteSpan bytes, ByteOrder order, std::u16string& out);
bool decodeUTF32(ByteSpan bytes, ByteOrder order, std::u16string& out);

// Encoders append: any units, or one character that is no surrogate.
void encodeUTF16(std::u16string_view units, ByteOrder order, std::string& out);
void encodeUTF32(char32_t value, ByteOrder order, std::string& out);

}  // namespace osa
