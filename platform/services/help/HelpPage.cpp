// Gathers a page's title, words and anchors from its markup.
#include "platform/services/help/HelpPage.h"

#include <algorithm>
#include <array>

#include "platform/services/help/Markup.h"
#include "platform/text/TextConverter.h"

namespace osa {
namespace {

constexpr std::size_t kLongestTitle = 512;
/// Where a page's encoding must be named.
constexpr std::size_t kHead = 4096;

/// Elements that may begin and end inside a word; every other ends it.
constexpr std::array<std::string_view, 19> kInsideWords = {
    "a",     "abbr", "b",      "big", "code", "em", "font", "i",   "kbd", "s",
    "small", "span", "strong", "sub", "sup",  "tt", "u",    "var", "wbr"};

std::string_view charsetOf(const MarkupToken& meta) {
    if (const auto charset = meta.attribute("charset"); !charset.empty()) return charset;
    const std::string_view content = meta.attribute("content");
    if (lowerCase(meta.attribute("http-equiv")) != "content-type") return {};
    const std::size_t found = lowerCase(content).find("charset=");
    if (found == std::string_view::npos) return {};
    const std::string_view name = content.substr(found + 8);
    return name.substr(0, name.find_first_of(" ;\""));
}

/// The encoding that the page's head names; UTF-8 when it names none that is known. A UTF-16 page
/// could not be read far enough to name itself, so such a name is wrong.
UInt32 namedEncoding(ByteSpan bytes) {
    MarkupLexer lexer(bytes.first(std::min(bytes.size(), kHead)));
    for (;;) {
        const MarkupToken token = lexer.next();
        if (token.kind == MarkupToken::Kind::end || token.text == "body") return kTextEncodingUTF8;
        if (token.kind != MarkupToken::Kind::opening || token.text != "meta") continue;
        const std::string_view charset = charsetOf(token);
        if (charset.empty()) continue;
        const bool isWide = lowerCase(charset).starts_with("utf-");
        const UInt32 encoding = encodingForCharsetName(charset);
        return isWide || !isEncodingKnown(encoding) ? UInt32{kTextEncodingUTF8} : encoding;
    }
}

std::string decodePage(ByteSpan bytes) {
    const ByteOrderMark mark = detectMark(bytes);
    const UInt32 encoding = mark.length > 0 ? mark.encoding : namedEncoding(bytes);
    const ByteSpan content = bytes.subspan(mark.length);
    std::u16string units;
    if (!decodeText(content, encoding, units))
        (void)decodeText(content, kTextEncodingISOLatin1, units);
    return utf8FromUTF16(units);
}

/// Runs of blanks made one, none at the ends, at most so long.
std::string asTitle(const std::string& text) {
    std::string title;
    for (const char c : text) {
        const bool isBlank = c == ' ' || (c >= '\t' && c <= '\r');
        if (!isBlank) {
            title += c;
        } else if (!title.empty() && title.back() != ' ') {
            title += ' ';
        }
    }
    if (title.ends_with(' ')) title.pop_back();
    if (title.size() > kLongestTitle) {
        std::size_t end = kLongestTitle;
        while ((title[end] & 0xC0) == 0x80) --end;
        title.resize(end);
    }
    return title;
}

class PageReader {
  public:
    HelpPage read(ByteSpan utf8) {
        MarkupLexer lexer(utf8);
        for (MarkupToken token = lexer.next(); token.kind != MarkupToken::Kind::end;
             token = lexer.next())
            take(token);
        page_.title = asTitle(page_.title);
        return std::move(page_);
    }

  private:
    void take(const MarkupToken& token) {
        if (token.kind == MarkupToken::Kind::text) {
            page_.text += token.text;
            if (isInTitle_) page_.title += token.text;
            return;
        }
        if (!std::ranges::count(kInsideWords, token.text)) page_.text += ' ';
        const bool isOpening = token.kind == MarkupToken::Kind::opening;
        if (token.text == "title") {
            isInTitle_ = isOpening && page_.title.empty();
        } else if (isOpening && token.text == "meta") {
            takeMeta(token);
        }
        if (!isOpening) return;
        addAnchor(token.attribute("id"));
        if (token.text == "a") addAnchor(token.attribute("name"));
    }

    void takeMeta(const MarkupToken& meta) {
        const std::string name = lowerCase(meta.attribute("name"));
        const std::string_view content = meta.attribute("content");
        if (name == "appletitle") page_.bookTitle = content;
        if (name == "keywords" || name == "description") (page_.text += content) += ' ';
    }

    void addAnchor(std::string_view name) {
        if (!name.empty()) page_.anchors.emplace_back(name);
    }

    HelpPage page_;
    bool isInTitle_ = false;
};

}  // namespace

HelpPage readHelpPage(ByteSpan bytes) {
    const std::string text = decodePage(bytes);
    return PageReader().read(asBytes(text));
}

}  // namespace osa
