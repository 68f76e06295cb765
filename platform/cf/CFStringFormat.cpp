// CFString: the format language.
#include <CoreFoundation/CFRef.h>
#include <CoreFoundation/CFString.h>

#include <cctype>
#include <cstdio>
#include <cstring>
#include <vector>

#include "platform/cf/StringObject.h"
#include "platform/text/TextConverter.h"

namespace {

/// va_list may be an array, which a reference to a struct passes on without surprises.
struct Arguments {
    va_list list;
};

/// One conversion as printf spells it, for example "%-5ld" with size "l" and conversion 'd'.
struct Conversion {
    std::string spelling;
    std::string size;
    int stars = 0;
    char kind = 0;
};

/// Reads the conversion behind a "%" at `index` and moves behind it; kind 0 when it is not
/// complete.
Conversion takeConversion(std::u16string_view format, std::size_t& index) {
    Conversion conversion{"%", {}, 0, 0};
    const auto next = [&] { return index < format.size() ? format[index] : u'\0'; };
    const auto takeAny = [&](const char* set, std::string& target) {
        while (next() != 0 && next() < 0x80 && std::strchr(set, static_cast<char>(next())))
            target.push_back(static_cast<char>(format[index++]));
    };
    takeAny("-+ #0123456789.*", conversion.spelling);
    takeAny("hlqjzt", conversion.size);
    for (const char c : conversion.spelling) conversion.stars += c == '*';
    if (next() == 0 || next() >= 0x80) return conversion;
    conversion.kind = static_cast<char>(format[index++]);
    return conversion;
}

template <typename T>
void print(const Conversion& conversion, const char* size, const std::vector<int>& stars, T value,
           std::u16string& out) {
    const std::string spelling = conversion.spelling + size + conversion.kind;
    const auto write = [&](char* buffer, std::size_t room) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
        if (stars.size() == 2)
            return std::snprintf(buffer, room, spelling.c_str(), stars[0], stars[1], value);
        if (stars.size() == 1)
            return std::snprintf(buffer, room, spelling.c_str(), stars[0], value);
        return std::snprintf(buffer, room, spelling.c_str(), value);
#pragma GCC diagnostic pop
    };
    const int length = write(nullptr, 0);
    if (length < 0) return;
    std::string text(static_cast<std::size_t>(length) + 1, '\0');
    write(text.data(), text.size());
    text.pop_back();
    osa::decodeText(osa::asBytes(text), kCFStringEncodingISOLatin1, out);
}

void printInteger(const Conversion& conversion, const std::vector<int>& stars, Arguments& arguments,
                  std::u16string& out) {
    const bool isLong = conversion.size == "l" || conversion.size == "z" || conversion.size == "t";
    const bool isLongLong =
        conversion.size == "ll" || conversion.size == "q" || conversion.size == "j";
    if (isLongLong) {
        print(conversion, "ll", stars, va_arg(arguments.list, long long), out);
    } else if (isLong) {
        print(conversion, "l", stars, va_arg(arguments.list, long), out);
    } else {
        const char* const size = conversion.size == "hh" ? "hh" : conversion.size == "h" ? "h" : "";
        print(conversion, size, stars, va_arg(arguments.list, int), out);
    }
}

/// Cuts text to the precision and pads it to the width that the conversion tells.
void appendPadded(const Conversion& conversion, const std::vector<int>& stars, std::u16string text,
                  std::u16string& out) {
    int numbers[2] = {0, -1};
    std::size_t star = 0;
    bool left = false;
    int* number = &numbers[0];
    for (const char c : conversion.spelling) {
        if (c == '-') left = true;
        if (c == '.') *(number = &numbers[1]) = 0;
        if (c == '*') *number = stars[star++];
        if (std::isdigit(static_cast<unsigned char>(c)) && *number < 1000000)
            *number = *number * 10 + (c - '0');
    }
    if (numbers[1] >= 0 && static_cast<std::size_t>(numbers[1]) < text.size())
        text.resize(static_cast<std::size_t>(numbers[1]));
    if (numbers[0] < 0) left = true;
    const auto width = static_cast<std::size_t>(numbers[0] < 0 ? -numbers[0] : numbers[0]);
    const std::u16string padding(width > text.size() ? width - text.size() : 0, u' ');
    out += left ? text + padding : padding + text;
}

std::u16string objectText(CFTypeRef object) {
    std::u16string text;
    if (const auto* const string = osa::cfCast<__CFString>(object)) return osa::unitsOf(string);
    osa::utf16FromUTF8(osa::describe(object), text);
    return text;
}

std::u16string systemText(const char* bytes) {
    std::u16string text;
    if (bytes == nullptr) return u"(null)";
    const osa::ByteSpan run = osa::asBytes(bytes);
    if (!osa::decodeText(run, CFStringGetSystemEncoding(), text))
        osa::decodeText(run, kCFStringEncodingMacRoman, text);
    return text;
}

std::u16string unicodeText(const UniChar* units) {
    if (units == nullptr) return u"(null)";
    return reinterpret_cast<const char16_t*>(units);
}

/// False when the conversion is none that is known.
bool convert(const Conversion& conversion, Arguments& arguments, std::u16string& out) {
    if (conversion.kind == 0 || !std::strchr("@dDiuUxXocCsSpaAeEfFgG", conversion.kind))
        return false;
    if (conversion.stars > 2) return false;
    std::vector<int> stars;
    for (int i = 0; i < conversion.stars; ++i) stars.push_back(va_arg(arguments.list, int));
    switch (conversion.kind) {
        case '@':
            appendPadded(conversion, stars, objectText(va_arg(arguments.list, CFTypeRef)), out);
            return true;
        case 's':
            appendPadded(conversion, stars, systemText(va_arg(arguments.list, const char*)), out);
            return true;
        case 'S':
            appendPadded(conversion, stars, unicodeText(va_arg(arguments.list, const UniChar*)),
                         out);
            return true;
        case 'c': {
            const char bytes[2] = {static_cast<char>(va_arg(arguments.list, int)), 0};
            appendPadded(conversion, stars, systemText(bytes), out);
            return true;
        }
        case 'C':
            out.push_back(static_cast<char16_t>(va_arg(arguments.list, int)));
            return true;
        case 'p':
            print(conversion, "", stars, va_arg(arguments.list, void*), out);
            return true;
        case 'a':
        case 'A':
        case 'e':
        case 'E':
        case 'f':
        case 'F':
        case 'g':
        case 'G':
            print(conversion, "", stars, va_arg(arguments.list, double), out);
            return true;
        default:
            printInteger(conversion, stars, arguments, out);
            return true;
    }
}

std::u16string format(std::u16string_view text, Arguments& arguments) {
    std::u16string out;
    for (std::size_t i = 0; i < text.size();) {
        if (text[i] != u'%') {
            out.push_back(text[i++]);
            continue;
        }
        const std::size_t start = i++;
        if (i < text.size() && text[i] == u'%') {
            out.push_back(text[i++]);
            continue;
        }
        const Conversion conversion = takeConversion(text, i);
        if (!convert(conversion, arguments, out)) out += text.substr(start, i - start);
    }
    return out;
}

}  // namespace

CFStringRef CFStringCreateWithFormatAndArguments(CFAllocatorRef, CFDictionaryRef,
                                                 CFStringRef formatString, va_list list) {
    if (formatString == nullptr) return nullptr;
    Arguments arguments;
    va_copy(arguments.list, list);
    CFStringRef result = nullptr;
    try {
        result = osa::createString(format(osa::unitsOf(formatString), arguments));
    } catch (const std::bad_alloc&) {
    }
    va_end(arguments.list);
    return result;
}

CFStringRef CFStringCreateWithFormat(CFAllocatorRef allocator, CFDictionaryRef options,
                                     CFStringRef format, ...) {
    va_list list;
    va_start(list, format);
    const CFStringRef result =
        CFStringCreateWithFormatAndArguments(allocator, options, format, list);
    va_end(list);
    return result;
}

void CFStringAppendFormat(CFMutableStringRef string, CFDictionaryRef options, CFStringRef format,
                          ...) {
    va_list list;
    va_start(list, format);
    const auto text = CFRef<CFStringRef>::Adopt(
        CFStringCreateWithFormatAndArguments(nullptr, options, format, list));
    va_end(list);
    if (text) CFStringAppend(string, text.get());
}
