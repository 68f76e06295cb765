// Chooses the converter of an encoding; the single-byte sets are converted here.
#include "platform/text/TextConverter.h"

#include <algorithm>

#include "platform/text/IcuConverter.h"
#include "platform/text/SingleByteSet.h"
#include "platform/text/UnicodeForms.h"

namespace osa {

namespace {

bool decodeSet(ByteSpan bytes, const SingleByteSet& set, std::u16string& out) {
    const auto& units = set.units();
    const std::size_t start = out.size();
    out.resize(start + bytes.size());
    std::transform(bytes.begin(), bytes.end(), out.begin() + static_cast<std::ptrdiff_t>(start),
                   [&](std::byte byte) { return units[std::to_integer<unsigned char>(byte)]; });
    return true;
}

bool decodeLatin1(ByteSpan bytes, std::u16string& out) {
    out.reserve(out.size() + bytes.size());
    for (const std::byte byte : bytes) out.push_back(std::to_integer<unsigned char>(byte));
    return true;
}

bool decodeInto(ByteSpan bytes, UInt32 cfEncoding, std::u16string& out) {
    switch (cfEncoding) {
        case kTextEncodingMacRoman:
            return decodeSet(bytes, kMacRomanSet, out);
        case kTextEncodingNextStepLatin:
            return decodeSet(bytes, kNextStepLatinSet, out);
        case kTextEncodingISOLatin1:
            return decodeLatin1(bytes, out);
        case kTextEncodingASCII:
            return isASCII(bytes) && decodeLatin1(bytes, out);
        case kTextEncodingUTF8:
            return decodeUTF8(asText(bytes), out);
        case kTextEncodingUTF16:
            return decodeUTF16(bytes, kHostOrder, out);
        case kTextEncodingUTF16BE:
            return decodeUTF16(bytes, ByteOrder::big, out);
        case kTextEncodingUTF16LE:
            return decodeUTF16(bytes, ByteOrder::little, out);
        case kTextEncodingUTF32:
            return decodeUTF32(bytes, kHostOrder, out);
        case kTextEncodingUTF32BE:
            return decodeUTF32(bytes, ByteOrder::big, out);
        case kTextEncodingUTF32LE:
            return decodeUTF32(bytes, ByteOrder::little, out);
        default:
            return decodeWithIcu(bytes, cfEncoding, out);
    }
}

/// Converts character by character; `encode(value, out)` answers false for what it cannot hold.
template <typename Encode>
std::size_t encodeEach(std::u16string_view units, UInt8 lossByte, std::string& out, Encode encode) {
    out.reserve(out.size() + units.size());
    for (std::size_t i = 0; i < units.size();) {
        const Character character = characterAt(units, i);
        if (!encode(character.value, out)) {
            if (lossByte == 0) return i;
            out.push_back(static_cast<char>(lossByte));
        }
        i += character.length;
    }
    return units.size();
}

std::size_t encodeSet(std::u16string_view units, const SingleByteSet& set, UInt8 lossByte,
                      std::string& out) {
    return encodeEach(units, lossByte, out, [&](char32_t value, std::string& text) {
        const int byte = value < 0x10000 ? set.byteOf(static_cast<char16_t>(value)) : -1;
        if (byte >= 0) text.push_back(static_cast<char>(byte));
        return byte >= 0;
    });
}

std::size_t encodeUpTo(std::u16string_view units, char32_t last, UInt8 lossByte, std::string& out) {
    return encodeEach(units, lossByte, out, [last](char32_t value, std::string& text) {
        if (value <= last) text.push_back(static_cast<char>(value));
        return value <= last;
    });
}

std::size_t encodeAsUTF16(std::u16string_view units, ByteOrder order, std::string& out) {
    encodeUTF16(units, order, out);
    return units.size();
}

std::size_t encodeAsUTF32(std::u16string_view units, ByteOrder order, UInt8 lossByte,
                          std::string& out) {
    return encodeEach(units, lossByte, out, [order](char32_t value, std::string& text) {
        if (!isSurrogate(value)) encodeUTF32(value, order, text);
        return !isSurrogate(value);
    });
}

std::size_t encodeAsUTF8(std::u16string_view units, UInt8 lossByte, std::string& out) {
    // Most text is ASCII: runs of it go in without looking at characters.
    std::size_t start = 0;
    while (start < units.size()) {
        std::size_t end = start;
        while (end < units.size() && units[end] < 0x80) ++end;
        out.append(units.begin() + static_cast<std::ptrdiff_t>(start),
                   units.begin() + static_cast<std::ptrdiff_t>(end));
        for (start = end; start < units.size() && units[start] >= 0x80;) {
            const Character character = characterAt(units, start);
            if (!isSurrogate(character.value)) {
                appendUTF8(character.value, out);
            } else if (lossByte != 0) {
                out.push_back(static_cast<char>(lossByte));
            } else {
                return start;
            }
            start += character.length;
        }
    }
    return units.size();
}

}  // namespace

bool decodeText(ByteSpan bytes, UInt32 cfEncoding, std::u16string& out) {
    const std::size_t start = out.size();
    const bool decoded = decodeInto(bytes, cfEncoding, out);
    if (!decoded) out.resize(start);
    return decoded;
}

std::size_t encodeText(std::u16string_view units, UInt32 cfEncoding, UInt8 lossByte,
                       std::string& out) {
    switch (cfEncoding) {
        case kTextEncodingMacRoman:
            return encodeSet(units, kMacRomanSet, lossByte, out);
        case kTextEncodingNextStepLatin:
            return encodeSet(units, kNextStepLatinSet, lossByte, out);
        case kTextEncodingISOLatin1:
            return encodeUpTo(units, 0xFF, lossByte, out);
        case kTextEncodingASCII:
            return encodeUpTo(units, 0x7F, lossByte, out);
        case kTextEncodingUTF16:
            return encodeAsUTF16(units, kHostOrder, out);
        case kTextEncodingUTF16BE:
            return encodeAsUTF16(units, ByteOrder::big, out);
        case kTextEncodingUTF16LE:
            return encodeAsUTF16(units, ByteOrder::little, out);
        case kTextEncodingUTF32:
            return encodeAsUTF32(units, kHostOrder, lossByte, out);
        case kTextEncodingUTF32BE:
            return encodeAsUTF32(units, ByteOrder::big, lossByte, out);
        case kTextEncodingUTF32LE:
            return encodeAsUTF32(units, ByteOrder::little, lossByte, out);
        case kTextEncodingUTF8:
            return encodeAsUTF8(units, lossByte, out);
        default:
            return encodeWithIcu(units, cfEncoding, lossByte, out);
    }
}

ByteOrderMark detectMark(ByteSpan bytes, bool allowUTF32) {
    using std::string_view_literals::operator""sv;
    const std::string_view text = asText(bytes);
    if (text.starts_with("\xEF\xBB\xBF"sv)) return {kTextEncodingUTF8, 3};
    if (allowUTF32 && text.starts_with("\xFF\xFE\0\0"sv)) return {kTextEncodingUTF32LE, 4};
    if (allowUTF32 && text.starts_with("\0\0\xFE\xFF"sv)) return {kTextEncodingUTF32BE, 4};
    if (text.starts_with("\xFF\xFE"sv)) return {kTextEncodingUTF16LE, 2};
    if (text.starts_with("\xFE\xFF"sv)) return {kTextEncodingUTF16BE, 2};
    return {};
}

std::string utf8FromUTF16(std::u16string_view units) {
    std::string out;
    out.reserve(units.size());
    for (std::size_t i = 0; i < units.size();) {
        const Character character = characterAt(units, i);
        appendUTF8(isSurrogate(character.value) ? 0xFFFD : character.value, out);
        i += character.length;
    }
    return out;
}

bool utf16FromUTF8(std::string_view bytes, std::u16string& out) {
    return decodeText(asBytes(bytes), kTextEncodingUTF8, out);
}

bool isASCII(ByteSpan bytes) {
    std::byte seen{0};
    for (const std::byte byte : bytes) seen |= byte;
    return std::to_integer<unsigned>(seen) < 0x80;
}

}  // namespace osa
