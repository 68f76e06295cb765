// CFURL: percent escapes in strings.
#include <CoreFoundation/CFURL.h>

#include <vector>

#include "platform/cf/StringObject.h"
#include "platform/cf/url/PercentEscapes.h"
#include "platform/text/TextConverter.h"
#include "platform/text/UnicodeForms.h"

namespace {

bool contains(std::u16string_view set, std::u16string_view character) {
    return set.find(character) != set.npos;
}

bool hasHexDigits(std::u16string_view text, std::size_t position, std::string& escape) {
    if (text.size() - position < 3) return false;
    escape.clear();
    for (const char16_t unit : text.substr(position, 3))
        escape += unit < 0x80 ? static_cast<char>(unit) : '?';
    return osa::escapedByteAt(escape, 0) >= 0;
}

/// Replaces one run of escapes by the characters of its bytes; false when they are no UTF-8.
bool replaceRun(std::string_view bytes, std::u16string_view leave, std::u16string& out) {
    std::u16string units;
    if (!osa::utf16FromUTF8(bytes, units)) return false;
    for (std::size_t i = 0; i < units.size();) {
        const std::size_t length = osa::characterAt(units, i).length;
        const std::u16string_view character = std::u16string_view(units).substr(i, length);
        i += length;
        if (!contains(leave, character)) {
            out += character;
            continue;
        }
        std::string escaped;
        for (const char byte : osa::utf8FromUTF16(character))
            osa::appendEscape(static_cast<unsigned char>(byte), escaped);
        out.append(escaped.begin(), escaped.end());
    }
    return true;
}

}  // namespace

CFStringRef CFURLCreateStringByAddingPercentEscapes(CFAllocatorRef, CFStringRef string,
                                                    CFStringRef leaveUnescaped,
                                                    CFStringRef legalToEscape,
                                                    CFStringEncoding encoding) {
    if (string == nullptr || !osa::isEncodingKnown(encoding)) return nullptr;
    const std::u16string units = osa::unitsOf(string);
    const std::u16string leave = osa::unitsOf(leaveUnescaped);
    const std::u16string escapeToo = osa::unitsOf(legalToEscape);
    std::u16string out;
    for (std::size_t i = 0; i < units.size();) {
        const osa::Character character = osa::characterAt(units, i);
        const std::u16string_view text = std::u16string_view(units).substr(i, character.length);
        i += character.length;
        const bool legal = osa::isURLCharacter(character.value) && !contains(escapeToo, text);
        if (legal || contains(leave, text)) {
            out += text;
            continue;
        }
        std::string bytes;
        std::string escaped;
        if (osa::encodeText(text, encoding, 0, bytes) != text.size()) return nullptr;
        for (const char byte : bytes) osa::appendEscape(static_cast<unsigned char>(byte), escaped);
        out.append(escaped.begin(), escaped.end());
    }
    return osa::createString(out);
}

CFStringRef CFURLCreateStringByReplacingPercentEscapes(CFAllocatorRef allocator, CFStringRef string,
                                                       CFStringRef leaveEscaped) {
    if (string == nullptr) return nullptr;
    if (leaveEscaped == nullptr) return CFStringCreateCopy(allocator, string);
    const std::u16string units = osa::unitsOf(string);
    const std::u16string leave = osa::unitsOf(leaveEscaped);
    std::u16string out;
    for (std::size_t i = 0; i < units.size();) {
        if (units[i] != u'%') {
            out += units[i++];
            continue;
        }
        std::string bytes;
        std::string escape;
        for (; i < units.size() && units[i] == u'%'; i += 3) {
            if (!hasHexDigits(units, i, escape)) return nullptr;
            bytes += static_cast<char>(osa::escapedByteAt(escape, 0));
        }
        if (!replaceRun(bytes, leave, out)) return nullptr;
    }
    return osa::createString(out);
}
