// Reads the old text form of property lists and its relative, the ".strings" table.
//
//   list     = value | entries                     entries alone are a ".strings" table
//   value    = "{" entries "}" | "(" [ value { "," value } [ "," ] ] ")" | "<" hex ">" | string
//   entries  = { string [ "=" value ] ";" }        a key alone is its own value
//   string   = quoted | one or more of  A-Z a-z 0-9 _ $ / : . -
//
// "//" and "/*" begin comments. The ";" of the last entry may be missing. All scalars are strings.
#include <CoreFoundation/CFString.h>

#include <string>

#include "platform/cf/plist/PropertyListForms.h"
#include "platform/cf/plist/TextCursor.h"
#include "platform/text/TextConverter.h"

namespace osa::plist {

namespace {

bool isUnquoted(char16_t unit) {
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') ||
           (unit >= u'0' && unit <= u'9') || unit == u'_' || unit == u'$' || unit == u'/' ||
           unit == u':' || unit == u'.' || unit == u'-';
}

class OldStyleParser {
  public:
    OldStyleParser(std::u16string_view text, const Maker& maker) : cursor_(text), maker_(maker) {}

    Value document();

  private:
    bool skipBlanks();
    bool atEnd();
    bool string(std::u16string& out);
    bool quoted(char16_t quote, std::u16string& out);
    void escape(std::u16string& out);
    Value value(int depth);
    Value array(int depth);
    Value data();
    Value entries(int depth, char16_t end);

    TextCursor cursor_;
    const Maker& maker_;
};

/// Blanks and comments; false when a comment does not end.
bool OldStyleParser::skipBlanks() {
    for (;;) {
        cursor_.takeWhile([](char16_t unit) {
            return isBlank(unit) || unit == 0x2028 || unit == 0x2029 || unit == 0xFEFF;
        });
        if (cursor_.accept(u"//")) {
            cursor_.takeWhile([](char16_t unit) {
                return unit != u'\n' && unit != u'\r' && unit != 0x2028 && unit != 0x2029;
            });
        } else if (cursor_.accept(u"/*")) {
            if (!cursor_.skipUntil(u"*/")) return false;
        } else {
            return true;
        }
    }
}

/// Files are often padded with zeros.
bool OldStyleParser::atEnd() {
    if (!skipBlanks()) return false;
    cursor_.takeWhile([](char16_t unit) { return unit == 0; });
    return cursor_.atEnd();
}

void OldStyleParser::escape(std::u16string& out) {
    static constexpr std::u16string_view kLetters = u"abfnrtv";
    static constexpr std::u16string_view kControls = u"\a\b\f\n\r\t\v";
    const char16_t unit = cursor_.take();
    const std::size_t control = kLetters.find(unit);
    if (control != kLetters.npos) {
        out += kControls[control];
    } else if (unit == u'U' || unit == u'u') {
        unsigned value = 0;
        for (int i = 0; i < 4 && hexValue(cursor_.peek()) >= 0; ++i)
            value = value << 4 | static_cast<unsigned>(hexValue(cursor_.take()));
        out += static_cast<char16_t>(value);
    } else if (unit >= u'0' && unit <= u'7') {
        unsigned value = unit - u'0';
        for (int i = 0; i < 2 && cursor_.peek() >= u'0' && cursor_.peek() <= u'7'; ++i)
            value = value << 3 | static_cast<unsigned>(cursor_.take() - u'0');
        const std::byte byte{static_cast<unsigned char>(value)};
        decodeText(ByteSpan(&byte, 1), kTextEncodingNextStepLatin, out);
    } else {
        out += unit;
    }
}

bool OldStyleParser::quoted(char16_t quote, std::u16string& out) {
    while (!cursor_.atEnd()) {
        const char16_t unit = cursor_.take();
        if (unit == quote) return true;
        if (unit != u'\\') {
            out += unit;
        } else if (!cursor_.atEnd()) {
            escape(out);
        }
    }
    return false;
}

bool OldStyleParser::string(std::u16string& out) {
    if (!skipBlanks()) return false;
    if (cursor_.peek() == u'"' || cursor_.peek() == u'\'') return quoted(cursor_.take(), out);
    out = cursor_.takeWhile(isUnquoted);
    return !out.empty();
}

Value OldStyleParser::data() {
    std::string bytes;
    int high = -1;
    while (skipBlanks() && !cursor_.accept(u">")) {
        const int digit = hexValue(cursor_.take());
        if (digit < 0) return {};
        if (high >= 0) bytes += static_cast<char>(high << 4 | digit);
        high = high < 0 ? digit : -1;
    }
    return high < 0 ? maker_.data(asBytes(bytes)) : Value();
}

Value OldStyleParser::array(int depth) {
    std::vector<Value> values;
    for (;;) {
        if (!skipBlanks()) return {};
        if (cursor_.accept(u")")) return maker_.array(values);
        Value element = value(depth + 1);
        if (!element || !skipBlanks()) return {};
        values.push_back(std::move(element));
        if (!cursor_.accept(u",") && cursor_.peek() != u')') return {};
    }
}

/// Entries up to `end`, or to the end of the text when that is 0.
Value OldStyleParser::entries(int depth, char16_t end) {
    std::vector<Value> keys;
    std::vector<Value> values;
    for (;;) {
        if (!skipBlanks()) return {};
        if (end == 0 ? atEnd() : cursor_.accept(std::u16string_view(&end, 1)))
            return maker_.dictionary(keys, values);
        std::u16string key;
        if (!string(key) || !skipBlanks()) return {};
        keys.push_back(maker_.string(key));
        values.push_back(cursor_.accept(u"=") ? value(depth + 1) : keys.back());
        if (!values.back() || !skipBlanks()) return {};
        const bool last = end == 0 ? atEnd() : cursor_.peek() == end;
        if (!cursor_.accept(u";") && !last) return {};
    }
}

Value OldStyleParser::value(int depth) {
    if (depth > kMaxDepth || !skipBlanks()) return {};
    if (cursor_.accept(u"{")) return entries(depth, u'}');
    if (cursor_.accept(u"(")) return array(depth);
    if (cursor_.accept(u"<")) return data();
    std::u16string text;
    return string(text) ? maker_.string(text) : Value();
}

Value OldStyleParser::document() {
    if (atEnd()) return maker_.dictionary({}, {});
    const TextCursor start = cursor_;
    const Value list = value(1);
    if (!list || !skipBlanks()) return {};
    const bool isTable = CFGetTypeID(list.get()) == CFStringGetTypeID() &&
                         (cursor_.peek() == u'=' || cursor_.peek() == u';');
    if (!isTable) return atEnd() ? list : Value();
    cursor_ = start;
    return entries(1, 0);
}

}  // namespace

Value readOldStyle(std::u16string_view text, const Maker& maker) {
    return OldStyleParser(text, maker).document();
}

}  // namespace osa::plist
