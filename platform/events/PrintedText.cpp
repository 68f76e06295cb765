// Text of any kind in quotes, fit for a terminal.
#include "platform/events/PrintedText.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "platform/events/PrintedValue.h"
#include "platform/text/MacRoman.h"
#include "platform/text/UnicodeForms.h"

namespace osa {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

/// Controls, separators of lines, and marks that change the direction of what follows.
bool canSteer(char32_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x61C || c == 0x200E || c == 0x200F ||
           (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

void showMacRoman(ByteSpan data, std::string& out) {
    for (const std::byte byte : data) {
        appendShown(kMacRomanToUnicode[std::to_integer<std::size_t>(byte)], '"', out);
    }
}

void showUTF16(ByteSpan data, std::string& out) {
    std::u16string units(data.size() / 2, u'\0');
    if (!units.empty()) std::memcpy(units.data(), data.data(), units.size() * 2);
    for (std::size_t i = 0; i < units.size();) {
        const Character character = characterAt(units, i);
        appendShown(character.value, '"', out);
        i += character.length;
    }
}

void showUTF8(ByteSpan data, std::string& out) {
    const std::string_view text = asText(data);
    std::u16string units;
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        units.clear();
        const bool isSound = decodeUTF8(text.substr(i, length), units);
        const Character character = isSound ? characterAt(units, 0) : Character{kReplacement, 1};
        appendShown(character.value, '"', out);
        i += isSound ? length : 1;
    }
}

/// The text of a string that has a form around it.
std::optional<ByteSpan> contentOf(DescType type, ByteSpan data) {
    if (type == typeCString) {
        const auto end = std::ranges::find(data, std::byte{0});
        if (end == data.end() || end + 1 != data.end()) return std::nullopt;
        return data.first(data.size() - 1);
    }
    if (type == typePString) {
        if (data.empty() || std::to_integer<std::size_t>(data[0]) != data.size() - 1) {
            return std::nullopt;
        }
        return data.subspan(1);
    }
    return data;
}

using Show = void (*)(ByteSpan data, std::string& out);

Show showOf(DescType type) {
    switch (type) {
        case typeChar:
        case typeCString:
        case typePString:
            return showMacRoman;
        case typeUnicodeText:
            return showUTF16;
        case typeUTF8Text:
        case typeFileURL:
        case typeApplicationBundleID:
        case typeApplicationURL:
            return showUTF8;
        default:
            return nullptr;
    }
}

/// Bytes that are shown: a character is not cut in two.
std::size_t shownSize(Show show, ByteSpan data) {
    if (data.size() <= kShownBytes) return data.size();
    std::size_t size = kShownBytes;
    const auto isInside = [&] { return (data[size] & std::byte{0xC0}) == std::byte{0x80}; };
    if (show == showUTF8) {
        for (int i = 0; i < 3 && isInside(); ++i) --size;
    }
    if (show == showUTF16) {
        char16_t last;
        std::memcpy(&last, data.data() + size - sizeof last, sizeof last);
        if (isHighSurrogate(last)) size -= sizeof last;
    }
    return size;
}

}  // namespace

void appendShown(char32_t character, char quote, std::string& out) {
    constexpr std::string_view kPlain = "\n\r\t";
    constexpr std::string_view kEscapes = "nrt";
    if (character == static_cast<char32_t>(quote) || character == U'\\') {
        out += '\\';
        out += static_cast<char>(character);
    } else if (canSteer(character)) {
        const auto known = kPlain.find(static_cast<char>(character));
        if (character < 0x80 && known != std::string_view::npos) {
            out += {'\\', kEscapes[known]};
            return;
        }
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(character));
        out += escape;
    } else {
        appendUTF8(isSurrogate(character) ? kReplacement : character, out);
    }
}

std::optional<std::string> shownText(DescType type, ByteSpan data) {
    const Show show = showOf(type);
    if (show == nullptr || (type == typeUnicodeText && data.size() % 2 != 0)) return std::nullopt;
    const auto content = contentOf(type, data);
    if (!content) return std::nullopt;
    const std::size_t size = shownSize(show, *content);
    std::string text = "\"";
    show(content->first(size), text);
    text += '"';
    if (size < content->size()) text += "\u2026";
    return text;
}

}  // namespace osa
