// Percent escapes.
#include "platform/cf/url/PercentEscapes.h"

namespace osa {

namespace {

bool isOneOf(char32_t character, std::string_view set) {
    return character < 0x80 && set.find(static_cast<char>(character)) != set.npos;
}

bool isAlphanumeric(char32_t c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

}  // namespace

bool isURLCharacter(char32_t character) {
    return isAlphanumeric(character) || isOneOf(character, "-_.!~*'();/?:@&=+$,");
}

int escapedByteAt(std::string_view text, std::size_t position) {
    if (text.size() - position < 3 || text[position] != '%') return -1;
    const int high = hexDigit(text[position + 1]);
    const int low = hexDigit(text[position + 2]);
    return high < 0 || low < 0 ? -1 : high << 4 | low;
}

bool isLegalURLText(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%') {
            if (escapedByteAt(text, i) < 0) return false;
        } else if (text[i] != '#' && !isURLCharacter(static_cast<unsigned char>(text[i]))) {
            return false;
        }
    }
    return true;
}

void appendEscape(unsigned char byte, std::string& out) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    out += '%';
    out += kDigits[byte >> 4];
    out += kDigits[byte & 15];
}

std::string escapePath(std::string_view bytes) {
    std::string out;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (isURLCharacter(byte) && c != ';' && c != '?') {
            out += c;
        } else {
            appendEscape(byte, out);
        }
    }
    return out;
}

std::string escapeIllegal(std::string_view bytes) {
    std::string out;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if (isURLCharacter(byte) || byte == '#' || escapedByteAt(bytes, i) >= 0) {
            out += bytes[i];
        } else {
            appendEscape(byte, out);
        }
    }
    return out;
}

std::optional<std::string> unescape(std::string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            out += text[i];
            continue;
        }
        const int byte = escapedByteAt(text, i);
        if (byte < 0) return std::nullopt;
        out += static_cast<char>(byte);
        i += 2;
    }
    return out;
}

}  // namespace osa
