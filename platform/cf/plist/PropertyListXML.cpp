// Reads XML property lists.
//
// This is no general XML reader: it knows the dozen elements of property lists, skips comments,
// processing instructions and the document type unread, and knows no entities but the five
// predefined ones and character references.
#include <charconv>
#include <limits>

#include "platform/cf/Calendar.h"
#include "platform/cf/plist/PropertyListForms.h"
#include "platform/cf/plist/TextCursor.h"
#include "platform/text/UnicodeForms.h"

namespace osa::plist {

namespace {

struct Tag {
    std::u16string_view name;
    bool isEnd = false;    ///< </name>
    bool isEmpty = false;  ///< <name/>
};

bool isNameUnit(char16_t unit) {
    return (unit | 0x20) >= u'a' && (unit | 0x20) <= u'z' && unit < 0x80;
}

class XMLParser {
  public:
    XMLParser(std::u16string_view text, const Maker& maker) : cursor_(text), maker_(maker) {}

    Value document();

  private:
    bool skipMisc();
    bool skipDocumentType();
    bool takeTag(Tag& tag);
    bool takeEnd(std::u16string_view name);
    bool takeText(const Tag& tag, std::u16string& text);
    bool takeEntity(std::u16string& text);
    bool takeCharacterReference(std::u16string_view digits, std::u16string& text);
    Value value(const Tag& tag, int depth);
    Value scalar(const Tag& tag);
    Value array(const Tag& tag, int depth);
    Value dictionary(const Tag& tag, int depth);
    Value base64(std::u16string_view text) const;

    TextCursor cursor_;
    const Maker& maker_;
};

/// Blanks, comments, instructions and the document type; false when one of them does not end.
bool XMLParser::skipMisc() {
    for (;;) {
        cursor_.takeWhile([](char16_t unit) { return isBlank(unit) || unit == 0xFEFF; });
        if (cursor_.accept(u"<!--")) {
            if (!cursor_.skipUntil(u"-->")) return false;
        } else if (cursor_.accept(u"<?")) {
            if (!cursor_.skipUntil(u"?>")) return false;
        } else if (cursor_.accept(u"<!DOCTYPE")) {
            if (!skipDocumentType()) return false;
        } else {
            return true;
        }
    }
}

/// Up to the ">" that is neither quoted nor inside "[...]".
bool XMLParser::skipDocumentType() {
    int brackets = 0;
    while (!cursor_.atEnd()) {
        const char16_t unit = cursor_.take();
        if (unit == u'"' || unit == u'\'') {
            if (!cursor_.skipUntil(std::u16string_view(&unit, 1))) return false;
        } else if (unit == u'[' || unit == u']') {
            brackets += unit == u'[' ? 1 : -1;
        } else if (unit == u'>' && brackets <= 0) {
            return true;
        }
    }
    return false;
}

/// A tag with its attributes, which mean nothing here.
bool XMLParser::takeTag(Tag& tag) {
    tag = {};
    if (!cursor_.accept(u"<")) return false;
    tag.isEnd = cursor_.accept(u"/");
    tag.name = cursor_.takeWhile(isNameUnit);
    if (tag.name.empty()) return false;
    while (!cursor_.atEnd()) {
        if (cursor_.accept(u"/>")) return tag.isEmpty = !tag.isEnd;
        const char16_t unit = cursor_.take();
        if (unit == u'>') return true;
        if (unit == u'<') return false;
        if (unit == u'"' || unit == u'\'') {
            if (!cursor_.skipUntil(std::u16string_view(&unit, 1))) return false;
        }
    }
    return false;
}

bool XMLParser::takeEnd(std::u16string_view name) {
    Tag tag;
    return takeTag(tag) && tag.isEnd && tag.name == name;
}

bool XMLParser::takeCharacterReference(std::u16string_view digits, std::u16string& text) {
    const bool hex = digits.starts_with(u'x') || digits.starts_with(u'X');
    if (hex) digits.remove_prefix(1);
    if (digits.empty()) return false;
    char32_t value = 0;
    for (const char16_t unit : digits) {
        const int digit = hexValue(unit);
        if (digit < 0 || (!hex && digit > 9)) return false;
        value = value * (hex ? 16 : 10) + static_cast<char32_t>(digit);
        if (value > 0x10FFFF) return false;
    }
    if (value == 0 || isSurrogate(value)) return false;
    appendCharacter(value, text);
    return true;
}

bool XMLParser::takeEntity(std::u16string& text) {
    struct Entity {
        std::u16string_view name;
        char16_t unit;
    };
    static constexpr Entity kEntities[] = {
        {u"lt", u'<'}, {u"gt", u'>'}, {u"amp", u'&'}, {u"apos", u'\''}, {u"quot", u'"'}};
    const std::u16string_view name =
        cursor_.takeWhile([](char16_t unit) { return unit != u';' && unit != u'<'; });
    if (!cursor_.accept(u";")) return false;
    if (name.starts_with(u'#')) return takeCharacterReference(name.substr(1), text);
    for (const Entity& entity : kEntities) {
        if (entity.name != name) continue;
        text += entity.unit;
        return true;
    }
    return false;
}

/// Content of an element that holds only text, and its end tag. Line ends become LF.
bool XMLParser::takeText(const Tag& tag, std::u16string& text) {
    while (!tag.isEmpty) {
        text += cursor_.takeWhile(
            [](char16_t unit) { return unit != u'<' && unit != u'&' && unit != u'\r'; });
        if (cursor_.accept(u"\r\n") || cursor_.accept(u"\r")) {
            text += u'\n';
        } else if (cursor_.accept(u"&")) {
            if (!takeEntity(text)) return false;
        } else if (cursor_.accept(u"<![CDATA[")) {
            std::u16string_view literal;
            if (!cursor_.takeUntil(u"]]>", literal)) return false;
            text += literal;
        } else if (cursor_.accept(u"<!--")) {
            if (!cursor_.skipUntil(u"-->")) return false;
        } else {
            return takeEnd(tag.name);
        }
    }
    return true;
}

std::string trimmedASCII(std::u16string_view text) {
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    std::string out;
    for (const char16_t unit : text) out += unit < 0x80 ? static_cast<char>(unit) : '?';
    return out;
}

Value parseInteger(std::string_view text) {
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    const bool hex = text.starts_with("0x") || text.starts_with("0X");
    if (hex) text.remove_prefix(2);
    std::uint64_t value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value, hex ? 16 : 10);
    if (error != std::errc() || stop != end) return {};
    if (!negative) return unsignedInteger(value);
    if (value > std::uint64_t{1} << 63) return {};
    return integer(static_cast<std::int64_t>(0 - value));
}

Value parseReal(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    double value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error == std::errc::invalid_argument || stop != end) return {};
    // Out of range: from_chars leaves the value alone; what was meant is as good as infinite or
    // zero.
    if (error == std::errc::result_out_of_range) {
        const bool tiny = text.find("e-") != text.npos || text.find("E-") != text.npos;
        const double huge = std::numeric_limits<double>::infinity();
        value = tiny ? 0 : text.starts_with('-') ? -huge : huge;
    }
    return real(value);
}

int base64Value(char16_t unit) {
    if (unit >= u'A' && unit <= u'Z') return unit - u'A';
    if (unit >= u'a' && unit <= u'z') return unit - u'a' + 26;
    if (unit >= u'0' && unit <= u'9') return unit - u'0' + 52;
    return unit == u'+' ? 62 : unit == u'/' ? 63 : -1;
}

/// What is no base64 digit is passed over, as every reader of these lists does.
Value XMLParser::base64(std::u16string_view text) const {
    std::string bytes;
    unsigned bits = 0;
    int bitCount = 0;
    for (const char16_t unit : text) {
        const int digit = base64Value(unit);
        if (unit == u'=') bitCount = 0;
        if (digit < 0) continue;
        bits = (bits << 6 | static_cast<unsigned>(digit)) & 0xFFFF;
        bitCount += 6;
        if (bitCount < 8) continue;
        bitCount -= 8;
        bytes += static_cast<char>(bits >> bitCount);
    }
    return maker_.data(asBytes(bytes));
}

Value XMLParser::scalar(const Tag& tag) {
    std::u16string text;
    if (!takeText(tag, text)) return {};
    if (tag.name == u"string") return maker_.string(text);
    if (tag.name == u"data") return base64(text);
    if (tag.name == u"integer") return parseInteger(trimmedASCII(text));
    if (tag.name == u"real") return parseReal(trimmedASCII(text));
    if (tag.name == u"true" || tag.name == u"false") return boolean(tag.name == u"true");
    if (tag.name == u"date") {
        const auto time = timeOfISO8601(trimmedASCII(text));
        return time ? date(*time) : Value();
    }
    return {};
}

Value XMLParser::array(const Tag& tag, int depth) {
    std::vector<Value> values;
    for (Tag item = tag; !tag.isEmpty;) {
        if (!skipMisc() || !takeTag(item)) return {};
        if (item.isEnd) {
            if (item.name != tag.name) return {};
            break;
        }
        Value element = value(item, depth + 1);
        if (!element) return {};
        values.push_back(std::move(element));
    }
    return maker_.array(values);
}

Value XMLParser::dictionary(const Tag& tag, int depth) {
    std::vector<Value> keys;
    std::vector<Value> values;
    for (Tag item = tag; !tag.isEmpty;) {
        if (!skipMisc() || !takeTag(item)) return {};
        if (item.isEnd) {
            if (item.name != tag.name) return {};
            break;
        }
        std::u16string key;
        if (item.name != u"key" || !takeText(item, key)) return {};
        if (!skipMisc() || !takeTag(item) || item.isEnd) return {};
        Value element = value(item, depth + 1);
        if (!element) return {};
        keys.push_back(maker_.string(key));
        values.push_back(std::move(element));
    }
    return maker_.dictionary(keys, values);
}

Value XMLParser::value(const Tag& tag, int depth) {
    if (depth > kMaxDepth) return {};
    if (tag.name == u"dict") return dictionary(tag, depth);
    if (tag.name == u"array") return array(tag, depth);
    return scalar(tag);
}

/// The root element may be missing; what follows its value is not looked at.
Value XMLParser::document() {
    Tag tag;
    if (!skipMisc() || !takeTag(tag) || tag.isEnd) return {};
    if (tag.name == u"plist") {
        if (tag.isEmpty || !skipMisc() || !takeTag(tag) || tag.isEnd) return {};
    }
    return value(tag, 1);
}

}  // namespace

bool isXML(std::u16string_view text) {
    TextCursor cursor(text);
    cursor.takeWhile(isBlank);
    // In the old style "<" begins data: hexadecimal digits, of which none begins an element.
    return cursor.peek() == u'<' && (cursor.peek(1) == u'?' || cursor.peek(1) == u'!' ||
                                     (isNameUnit(cursor.peek(1)) && hexValue(cursor.peek(1)) < 0) ||
                                     cursor.startsWith(u"<dict") || cursor.startsWith(u"<array") ||
                                     cursor.startsWith(u"<data") || cursor.startsWith(u"<date") ||
                                     cursor.startsWith(u"<false"));
}

Value readXML(std::u16string_view text, const Maker& maker) {
    return XMLParser(text, maker).document();
}

}  // namespace osa::plist
