// Tags, attributes and entities.
#include "platform/services/help/Markup.h"

#include <algorithm>
#include <array>

#include "platform/text/UnicodeForms.h"

namespace osa {
namespace {

struct Entity {
    std::string_view name;
    char32_t character;
};
constexpr std::array<Entity, 34> kEntities = {{
    {"amp", '&'},       {"lt", '<'},        {"gt", '>'},        {"quot", '"'},
    {"apos", '\''},     {"nbsp", 0x00A0},   {"copy", 0x00A9},   {"reg", 0x00AE},
    {"trade", 0x2122},  {"hellip", 0x2026}, {"ndash", 0x2013},  {"mdash", 0x2014},
    {"lsquo", 0x2018},  {"rsquo", 0x2019},  {"ldquo", 0x201C},  {"rdquo", 0x201D},
    {"bull", 0x2022},   {"middot", 0x00B7}, {"auml", 0x00E4},   {"ouml", 0x00F6},
    {"uuml", 0x00FC},   {"Auml", 0x00C4},   {"Ouml", 0x00D6},   {"Uuml", 0x00DC},
    {"szlig", 0x00DF},  {"eacute", 0x00E9}, {"egrave", 0x00E8}, {"agrave", 0x00E0},
    {"ccedil", 0x00E7}, {"ntilde", 0x00F1}, {"larr", 0x2190},   {"rarr", 0x2192},
    {"times", 0x00D7},  {"shy", 0x00AD},
}};
constexpr std::size_t kLongestName = 8;
constexpr std::size_t kMostAttributes = 64;
constexpr char32_t kLargestCharacter = 0x10FFFF;

bool isBlank(UInt8 c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}
bool isDigit(UInt8 c) {
    return c >= '0' && c <= '9';
}
UInt8 lower(UInt8 c) {
    return c >= 'A' && c <= 'Z' ? static_cast<UInt8>(c + 32) : c;
}
bool isLetter(UInt8 c) {
    return lower(c) >= 'a' && lower(c) <= 'z';
}

/// The bytes up to the first that `ends` accepts, or to the end.
template <typename Test>
std::string_view readUntil(ByteReader& in, Test ends) {
    ByteReader start = in;
    while (!in.atEnd() && !ends(in.peek())) in.skip(1);
    return start.text(in.position() - start.position());
}

void skipBlanks(ByteReader& in) {
    (void)readUntil(in, [](UInt8 c) { return !isBlank(c); });
}

/// The number behind "&#"; 0 when it is none or no character's.
char32_t readNumber(ByteReader& in) {
    const bool isHexadecimal = lower(in.peek()) == 'x';
    if (isHexadecimal) in.skip(1);
    char32_t number = 0;
    for (;; in.skip(1)) {
        const UInt8 c = lower(in.peek());
        const bool isHexDigit = isHexadecimal && c >= 'a' && c <= 'f';
        if (!isDigit(c) && !isHexDigit) break;
        const char32_t digit = isHexDigit ? c - 'a' + 10u : c - '0' + 0u;
        number = std::min(kLargestCharacter + 1, number * (isHexadecimal ? 16 : 10) + digit);
    }
    return number > kLargestCharacter || isSurrogate(number) ? 0 : number;
}

char32_t readName(ByteReader& in) {
    ByteReader start = in;
    std::size_t length = 0;
    for (; length < kLongestName && isLetter(in.peek()); ++length) in.skip(1);
    const std::string_view name = start.text(length);
    const auto found = std::ranges::find(kEntities, name, &Entity::name);
    return found == kEntities.end() ? 0 : found->character;
}

/// Appends the character of the entity at the reader, or the "&" alone that begins none.
void readEntity(ByteReader& in, std::string& out) {
    in.skip(1);
    ByteReader ahead = in;
    const bool isNumber = ahead.peek() == '#';
    if (isNumber) ahead.skip(1);
    const char32_t character = isNumber ? readNumber(ahead) : readName(ahead);
    if (character == 0) {
        out += '&';
        return;
    }
    if (ahead.peek() == ';') ahead.skip(1);
    in = ahead;
    appendUTF8(character, out);
}

std::string decodeEntities(std::string_view text) {
    ByteReader in(text.data(), text.size());
    std::string decoded;
    while (!in.atEnd()) {
        if (in.peek() == '&') readEntity(in, decoded);
        decoded += readUntil(in, [](UInt8 c) { return c == '&'; });
    }
    return decoded;
}

bool startsWith(ByteReader in, std::string_view lowerCaseText) {
    if (in.remaining() < lowerCaseText.size()) return false;
    return std::ranges::all_of(lowerCaseText,
                               [&in](char c) { return lower(in.u8()) == static_cast<UInt8>(c); });
}

}  // namespace

std::string lowerCase(std::string_view text) {
    std::string result(text);
    for (char& c : result) c = static_cast<char>(lower(static_cast<UInt8>(c)));
    return result;
}

std::string_view MarkupToken::attribute(std::string_view name) const {
    const auto found = std::ranges::find(attributes, name, &Attribute::name);
    return found == attributes.end() ? std::string_view() : std::string_view(found->value);
}

MarkupToken MarkupLexer::next() {
    while (in_.peek() == '<') {
        ByteReader ahead = in_;
        ahead.skip(1);
        const UInt8 first = ahead.peek();
        if (first == '!' || first == '?') {
            in_ = ahead;
            skipDeclaration();
            continue;
        }
        if (first == '/') ahead.skip(1);
        if (!isLetter(ahead.peek())) break;
        in_ = ahead;
        return tag(first == '/' ? MarkupToken::Kind::closing : MarkupToken::Kind::opening);
    }
    if (in_.atEnd()) return {};
    // One that begins no tag is text.
    std::string text = in_.peek() == '<' ? std::string(in_.text(1)) : std::string();
    text += decodeEntities(readUntil(in_, [](UInt8 c) { return c == '<'; }));
    return {MarkupToken::Kind::text, std::move(text)};
}

MarkupToken MarkupLexer::tag(MarkupToken::Kind kind) {
    MarkupToken token{kind, lowerCase(readUntil(
                                in_, [](UInt8 c) { return isBlank(c) || c == '/' || c == '>'; }))};
    for (;;) {
        (void)readUntil(in_, [](UInt8 c) { return !isBlank(c) && c != '/'; });
        if (in_.atEnd()) break;
        if (in_.peek() == '>') {
            in_.skip(1);
            break;
        }
        MarkupToken::Attribute each = attribute();
        if (token.attributes.size() < kMostAttributes) token.attributes.push_back(std::move(each));
    }
    const bool isOpening = kind == MarkupToken::Kind::opening;
    if (isOpening && (token.text == "script" || token.text == "style"))
        skipBefore("</" + token.text);
    return token;
}

/// Takes one byte at least, so that the tag comes to its end.
MarkupToken::Attribute MarkupLexer::attribute() {
    MarkupToken::Attribute result;
    result.name = in_.text(1);
    result.name +=
        readUntil(in_, [](UInt8 c) { return isBlank(c) || c == '=' || c == '/' || c == '>'; });
    result.name = lowerCase(result.name);
    skipBlanks(in_);
    if (in_.peek() != '=') return result;
    in_.skip(1);
    skipBlanks(in_);
    result.value = decodeEntities(value());
    return result;
}

std::string MarkupLexer::value() {
    const UInt8 quote = in_.peek();
    if (quote != '"' && quote != '\'')
        return std::string(readUntil(in_, [](UInt8 c) { return isBlank(c) || c == '>'; }));
    in_.skip(1);
    std::string quoted(readUntil(in_, [quote](UInt8 c) { return c == quote; }));
    if (!in_.atEnd()) in_.skip(1);
    return quoted;
}

void MarkupLexer::skipDeclaration() {
    if (startsWith(in_, "!--")) skipBefore("-->");
    (void)readUntil(in_, [](UInt8 c) { return c == '>'; });
    if (!in_.atEnd()) in_.skip(1);
}

void MarkupLexer::skipBefore(std::string_view lowerCase) {
    while (!in_.atEnd() && !startsWith(in_, lowerCase)) in_.skip(1);
}

}  // namespace osa
