// Text of any origin as valid UTF-8 for output.
#include <cstdio>
#include <vector>

#include "cli/RecordFormat.h"

namespace osa::cli {
namespace {

constexpr char kReplacement[] = "\xEF\xBF\xBD";

void appendCodePoint(std::string& out, UInt32 point) {
    if (point < 0x80) {
        out += static_cast<char>(point);
        return;
    }
    const int more = point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;
    static constexpr int leads[] = {0, 0xC0, 0xE0, 0xF0};
    out += static_cast<char>(leads[more] | static_cast<int>(point >> 6 * more));
    for (int i = more - 1; i >= 0; --i) {
        out += static_cast<char>(0x80 | static_cast<int>(point >> 6 * i & 0x3F));
    }
}

UInt32 codePoint(const std::string& bytes, std::size_t at, std::size_t length) {
    UInt32 point = static_cast<unsigned char>(bytes[at]);
    if (length > 1) point &= 0x7Fu >> length;
    for (std::size_t i = 1; i < length; ++i) {
        point = point << 6 | (static_cast<unsigned char>(bytes[at + i]) & 0x3F);
    }
    return point;
}

/// Controls, line ends that are none, and marks that turn the direction of what follows.
bool steersTerminal(UInt32 point) {
    return point < 0x20 || (point >= 0x7F && point < 0xA0) || point == 0x2028 || point == 0x2029 ||
           (point >= 0x202A && point <= 0x202E) || (point >= 0x2066 && point <= 0x2069);
}

/// Bytes of the well-formed character at `at`; 0 when there is none.
std::size_t characterLength(const std::string& bytes, std::size_t at) {
    const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned char lead = byteAt(at);
    if (lead < 0x80) return 1;
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || length > bytes.size() - at) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byteAt(at + i) & 0xC0) != 0x80) return 0;
    }
    const UInt32 point = codePoint(bytes, at, length);
    const bool tooLong = (length == 3 && point < 0x800) || (length == 4 && point < 0x10000);
    const bool surrogate = point >= 0xD800 && point <= 0xDFFF;
    return tooLong || surrogate || point > 0x10FFFF ? 0 : length;
}

}  // namespace

std::string toUTF8(CFStringRef string) {
    if (string == nullptr) return {};
    const CFIndex length = CFStringGetLength(string);
    std::vector<UniChar> units(static_cast<std::size_t>(length));
    CFStringGetCharacters(string, CFRangeMake(0, length), units.data());
    std::string out;
    out.reserve(units.size());
    for (std::size_t i = 0; i < units.size(); ++i) {
        const UInt32 unit = units[i];
        const bool isPair = unit >= 0xD800 && unit <= 0xDBFF && i + 1 < units.size() &&
                            units[i + 1] >= 0xDC00 && units[i + 1] <= 0xDFFF;
        if (isPair) {
            appendCodePoint(out, 0x10000 + ((unit - 0xD800) << 10) + (units[++i] - 0xDC00U));
        } else {
            appendCodePoint(out, unit >= 0xD800 && unit <= 0xDFFF ? 0xFFFD : unit);
        }
    }
    return out;
}

std::string toValidUTF8(const std::string& bytes) {
    std::string out;
    for (std::size_t i = 0; i < bytes.size();) {
        const std::size_t length = characterLength(bytes, i);
        if (length == 0) {
            out += kReplacement;
            ++i;
        } else {
            out.append(bytes, i, length);
            i += length;
        }
    }
    return out;
}

std::string forTerminal(const std::string& bytes) {
    const std::string text = toValidUTF8(bytes);
    std::string out;
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = characterLength(text, i);
        const UInt32 point = codePoint(text, i, length);
        if (steersTerminal(point)) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", point);
            out += escape;
        } else {
            out.append(text, i, length);
        }
        i += length;
    }
    return out;
}

}  // namespace osa::cli
