// The Unicode transformation formats.
#include "platform/text/UnicodeForms.h"

#include <cstring>
#include <utility>

namespace osa {

namespace {

/// Length of the run of ASCII at the start, eight bytes at a time.
std::size_t asciiRun(std::string_view bytes) {
    std::size_t i = 0;
    for (; i + 8 <= bytes.size(); i += 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data() + i, 8);
        if ((word & 0x8080808080808080u) != 0) break;
    }
    while (i < bytes.size() && static_cast<unsigned char>(bytes[i]) < 0x80) ++i;
    return i;
}

/// The multi-byte sequence at the start, or length 0 when it is malformed.
Character sequenceAt(std::string_view bytes) {
    const auto lead = static_cast<unsigned char>(bytes[0]);
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || bytes.size() < length) return {};
    char32_t value = lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(bytes[i]);
        if ((next & 0xC0) != 0x80) return {};
        value = value << 6 | (next & 0x3F);
    }
    const char32_t smallest = length == 2 ? 0x80 : length == 3 ? 0x800 : 0x10000;
    if (value < smallest || value > 0x10FFFF || isSurrogate(value)) return {};
    return {value, length};
}

}  // namespace

Character characterAt(std::u16string_view units, std::size_t index) {
    const char16_t first = units[index];
    if (isHighSurrogate(first) && index + 1 < units.size() && isLowSurrogate(units[index + 1])) {
        const char32_t high = first & 0x3FFu;
        const char32_t low = units[index + 1] & 0x3FFu;
        return {0x10000 + (high << 10 | low), 2};
    }
    return {first, 1};
}

void appendCharacter(char32_t value, std::u16string& out) {
    if (value < 0x10000) {
        out.push_back(static_cast<char16_t>(value));
        return;
    }
    value -= 0x10000;
    out.push_back(static_cast<char16_t>(0xD800 | value >> 10));
    out.push_back(static_cast<char16_t>(0xDC00 | (value & 0x3FF)));
}

void appendUTF8(char32_t value, std::string& out) {
    const auto trail = [&](unsigned shift) {
        out.push_back(static_cast<char>(0x80 | (value >> shift & 0x3F)));
    };
    if (value < 0x80) {
        out.push_back(static_cast<char>(value));
    } else if (value < 0x800) {
        out.push_back(static_cast<char>(0xC0 | value >> 6));
        trail(0);
    } else if (value < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | value >> 12));
        trail(6);
        trail(0);
    } else {
        out.push_back(static_cast<char>(0xF0 | value >> 18));
        trail(12);
        trail(6);
        trail(0);
    }
}

bool decodeUTF8(std::string_view bytes, std::u16string& out) {
    out.reserve(out.size() + bytes.size());
    while (!bytes.empty()) {
        const std::size_t run = asciiRun(bytes);
        out.append(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(run));
        bytes.remove_prefix(run);
        while (!bytes.empty() && static_cast<unsigned char>(bytes[0]) >= 0x80) {
            const Character character = sequenceAt(bytes);
            if (character.length == 0) return false;
            appendCharacter(character.value, out);
            bytes.remove_prefix(character.length);
        }
    }
    return true;
}

bool decodeUTF16(ByteSpan bytes, ByteOrder order, std::u16string& out) {
    if (bytes.size() % 2 != 0) return false;
    const std::size_t start = out.size();
    out.resize(start + bytes.size() / 2);
    if (!bytes.empty()) std::memcpy(out.data() + start, bytes.data(), bytes.size());
    if (order == kHostOrder) return true;
    for (std::size_t i = start; i < out.size(); ++i)
        out[i] = static_cast<char16_t>(out[i] << 8 | out[i] >> 8);
    return true;
}

bool decodeUTF32(ByteSpan bytes, ByteOrder order, std::u16string& out) {
    if (bytes.size() % 4 != 0) return false;
    ByteReader reader(bytes);
    out.reserve(out.size() + bytes.size() / 4);
    while (!reader.atEnd()) {
        const char32_t value = order == ByteOrder::big ? reader.u32() : reader.u32LittleEndian();
        if (value > 0x10FFFF || isSurrogate(value)) return false;
        appendCharacter(value, out);
    }
    return true;
}

void encodeUTF16(std::u16string_view units, ByteOrder order, std::string& out) {
    const std::size_t start = out.size();
    out.resize(start + units.size() * 2);
    if (!units.empty()) std::memcpy(out.data() + start, units.data(), units.size() * 2);
    if (order == kHostOrder) return;
    for (std::size_t i = start; i < out.size(); i += 2) std::swap(out[i], out[i + 1]);
}

void encodeUTF32(char32_t value, ByteOrder order, std::string& out) {
    for (unsigned i = 0; i < 4; ++i) {
        const unsigned shift = order == ByteOrder::big ? 24 - 8 * i : 8 * i;
        out.push_back(static_cast<char>(value >> shift));
    }
}

}  // namespace osa
