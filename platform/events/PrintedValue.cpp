// The customary notation of codes and of values that hold no others, as UTF-8.
#include "platform/events/PrintedValue.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "platform/events/PrintedText.h"
#include "platform/text/MacRoman.h"

namespace osa {
namespace {

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isIdentifier(std::string_view text) {
    return !text.empty() && isLetter(text.front()) && std::ranges::all_of(text, [](char c) {
        return isLetter(c) || (c >= '0' && c <= '9') || c == '_';
    });
}

std::string charactersOf(FourCharCode code) {
    std::string characters(4, '\0');
    for (char& each : characters) {
        each = static_cast<char>(code >> 24);
        code <<= 8;
    }
    return characters;
}

void printQuotedCode(FourCharCode code, std::string& out) {
    out += '\'';
    for (const char each : charactersOf(code)) {
        appendShown(kMacRomanToUnicode[static_cast<unsigned char>(each)], '\'', out);
    }
    out += '\'';
}

template <typename T>
T loaded(ByteSpan data) {
    T value;
    std::memcpy(&value, data.data(), sizeof value);
    return value;
}

template <typename T>
void appendNumber(T value, std::string& out) {
    char text[32];
    const auto written = std::to_chars(std::begin(text), std::end(text), value);
    out.append(text, written.ptr);
}

/// Types of a certain number of integers.
struct Integers {
    DescType type;
    UInt8 width;
    UInt8 count;
    bool isSigned;
};
constexpr Integers kIntegers[] = {
    {typeSInt16, 2, 1, true},
    {typeUInt16, 2, 1, false},
    {typeSInt32, 4, 1, true},
    {typeUInt32, 4, 1, false},
    {typeSInt64, 8, 1, true},
    {typeUInt64, 8, 1, false},
    {typeLongDateTime, 8, 1, true},
    {typeQDPoint, 2, 2, true},
    {typeQDRectangle, 2, 4, true},
    {typeRGBColor, 2, 3, false},
    {typeProcessSerialNumber, 4, 2, false},
};

void appendInteger(const Integers& kind, ByteSpan data, std::string& out) {
    switch (kind.width) {
        case 2:
            return kind.isSigned ? appendNumber(loaded<SInt16>(data), out)
                                 : appendNumber(loaded<UInt16>(data), out);
        case 4:
            return kind.isSigned ? appendNumber(loaded<SInt32>(data), out)
                                 : appendNumber(loaded<UInt32>(data), out);
        default:
            return kind.isSigned ? appendNumber(loaded<SInt64>(data), out)
                                 : appendNumber(loaded<UInt64>(data), out);
    }
}

// Each of these answers false for a type that is not its own, or data that the type cannot have.

bool printIntegers(DescType type, ByteSpan data, std::string& out) {
    const auto* const kind = std::ranges::find(kIntegers, type, &Integers::type);
    if (kind == std::end(kIntegers)) return false;
    if (data.size() != std::size_t{kind->width} * kind->count) return false;
    if (type == typeSInt32) {
        appendInteger(*kind, data, out);
        return true;
    }
    printQuotedCode(type, out);
    for (UInt8 i = 0; i < kind->count; ++i) {
        out += i == 0 ? "(" : ", ";
        appendInteger(*kind, data.subspan(std::size_t{i} * kind->width), out);
    }
    out += ')';
    return true;
}

bool printReal(DescType type, ByteSpan data, std::string& out) {
    const bool isDouble = type == typeIEEE64BitFloatingPoint && data.size() == 8;
    const bool isFloat = type == typeIEEE32BitFloatingPoint && data.size() == 4;
    const bool isFixed = type == typeFixed && data.size() == 4;
    if (!isDouble && !isFloat && !isFixed) return false;
    printQuotedCode(type, out);
    out += '(';
    if (isDouble) appendNumber(loaded<double>(data), out);
    if (isFloat) appendNumber(loaded<float>(data), out);
    if (isFixed) appendNumber(loaded<SInt32>(data) / 65536.0, out);
    out += ')';
    return true;
}

bool printCodeValue(DescType type, ByteSpan data, std::string& out) {
    constexpr DescType kCodes[] = {typeType,    typeEnumerated,      typeProperty,
                                   typeKeyword, typeAbsoluteOrdinal, typeApplSignature};
    if (data.size() != sizeof(FourCharCode)) return false;
    if (std::ranges::find(kCodes, type) == std::end(kCodes)) return false;
    const auto code = loaded<FourCharCode>(data);
    if (type == typeEnumerated) {
        printCode(code, out);
        return true;
    }
    printCode(type, out);
    out += '(';
    printQuotedCode(code, out);
    out += ')';
    return true;
}

bool printBoolean(DescType type, ByteSpan data, std::string& out) {
    const bool isConstant = (type == typeTrue || type == typeFalse) && data.empty();
    const bool isByte = type == typeBoolean && data.size() == 1 && data[0] <= std::byte{1};
    if (type == typeNull && data.empty()) {
        out += "null()";
    } else if (isConstant || isByte) {
        printQuotedCode(type, out);
        out += isConstant ? "()" : data[0] == std::byte{0} ? "(false)" : "(true)";
    } else {
        return false;
    }
    return true;
}

}  // namespace

void printCode(FourCharCode code, std::string& out) {
    const std::string characters = charactersOf(code);
    if (isIdentifier(characters)) {
        out += characters;
    } else {
        printQuotedCode(code, out);
    }
}

void printKeyword(AEKeyword keyword, std::string& out) {
    if (keyword == keyDirectObject) {
        out += "----";
    } else {
        printCode(keyword, out);
    }
}

void printTypeName(DescType type, std::string& out) {
    std::string characters = charactersOf(type);
    characters.erase(characters.find_last_not_of(' ') + 1);
    if (isIdentifier(characters)) {
        out += characters;
    } else {
        printQuotedCode(type, out);
    }
}

void printBytes(DescType type, ByteSpan data, std::string& out) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    const ByteSpan shown = data.first(std::min(data.size(), kShownBytes));
    printQuotedCode(type, out);
    out += shown.empty() ? "(" : "($";
    for (const std::byte byte : shown) {
        out += kDigits[std::to_integer<unsigned>(byte) >> 4];
        out += kDigits[std::to_integer<unsigned>(byte) & 15];
    }
    if (!shown.empty()) out += '$';
    out += shown.size() < data.size() ? "\u2026)" : ")";
}

void printValue(DescType type, ByteSpan data, std::string& out) {
    if (printIntegers(type, data, out) || printReal(type, data, out) ||
        printCodeValue(type, data, out) || printBoolean(type, data, out)) {
        return;
    }
    if (const auto text = shownText(type, data); !text) {
        printBytes(type, data, out);
    } else if (type == typeChar) {
        out += *text;
    } else {
        printQuotedCode(type, out);
        out += '(' + *text + ')';
    }
}

}  // namespace osa
