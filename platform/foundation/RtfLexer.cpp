// Control words: letters, perhaps a number, and one space that belongs to the word.
#include "platform/foundation/RtfLexer.h"

#include <algorithm>

namespace osa {
namespace {

constexpr std::size_t kLongestName = 32;
constexpr SInt64 kLargestNumber = 0x7FFFFFFF;

bool isLetter(UInt8 c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool isDigit(UInt8 c) {
    return c >= '0' && c <= '9';
}

int hexDigit(UInt8 c) {
    if (isDigit(c)) return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

}  // namespace

RtfToken RtfLexer::next() {
    while (!in_.atEnd()) {
        const UInt8 byte = in_.u8();
        switch (byte) {
            case '{':
                return {RtfToken::Kind::open};
            case '}':
                return {RtfToken::Kind::close};
            case '\\':
                return control();
            case '\r':
            case '\n':
            case '\0':
                continue;
            default:
                return {RtfToken::Kind::character, byte};
        }
    }
    return {};
}

RtfToken RtfLexer::control() {
    if (in_.atEnd()) return {};
    if (isLetter(in_.peek())) return word();
    const UInt8 symbol = in_.u8();
    if (symbol == '\'') {
        int value = 0;
        for (int i = 0; i < 2 && hexDigit(in_.peek()) >= 0; ++i)
            value = value * 16 + hexDigit(in_.u8());
        return {RtfToken::Kind::character, static_cast<UInt8>(value)};
    }
    if (symbol == '\r' && in_.peek() == '\n') in_.skip(1);
    return {RtfToken::Kind::symbol, symbol};
}

RtfToken RtfLexer::word() {
    RtfToken token{RtfToken::Kind::word};
    ByteReader start = in_;
    std::size_t length = 0;
    while (isLetter(in_.peek())) {
        in_.skip(1);
        ++length;
    }
    token.name = start.text(std::min(length, kLongestName));

    ByteReader ahead = in_;
    const bool negative = ahead.peek() == '-';
    if (negative) ahead.skip(1);
    if (isDigit(ahead.peek())) {
        SInt64 number = 0;
        while (isDigit(ahead.peek()))
            number = std::min(kLargestNumber, number * 10 + (ahead.u8() - '0'));
        in_ = ahead;
        token.hasNumber = true;
        token.number = static_cast<SInt32>(negative ? -number : number);
    }
    if (in_.peek() == ' ') in_.skip(1);
    if (token.name == "bin" && token.number > 0)
        in_.skip(std::min<std::size_t>(static_cast<std::size_t>(token.number), in_.remaining()));
    return token;
}

}  // namespace osa
