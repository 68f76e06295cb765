// Walks the tokens with a stack of group states and collects what is text.
//
// Bytes are collected into runs and converted together, because a character may take two of them;
// any token that is not a character ends the run.
#include "platform/foundation/RichText.h"

#include <algorithm>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/foundation/RtfCharsets.h"
#include "platform/foundation/RtfLexer.h"
#include "platform/text/TextConverter.h"

namespace osa {
namespace {

constexpr std::size_t kDeepest = 4096;
constexpr char16_t kAttachment = 0xFFFC;
constexpr UInt32 kSymbolEncoding = kTextEncodingInvalid;

/// What a group inherits from the one around it.
struct State {
    bool skip = false;     ///< text here is not the document's
    bool deleted = false;  ///< a revision that took it out
    bool fonts = false;    ///< inside the font table
    bool picture = false;  ///< inside the name of an attachment, whose stand-in follows the group
    SInt32 font = -1;
    SInt32 fallbacks = 1;  ///< \uc: characters to skip after each \u
};

struct Character {
    std::string_view word;
    char16_t unit;
};
constexpr Character kCharacters[] = {
    {"par", u'\n'},        {"sect", u'\n'},    {"line", 0x2028},    {"page", u'\f'},
    {"tab", u'\t'},        {"cell", u'\n'},    {"nestcell", u'\n'}, {"emdash", 0x2014},
    {"endash", 0x2013},    {"lquote", 0x2018}, {"rquote", 0x2019},  {"ldblquote", 0x201C},
    {"rdblquote", 0x201D}, {"bullet", 0x2022}, {"emspace", 0x2003}, {"enspace", 0x2002},
    {"qmspace", 0x2005},   {"zwj", 0x200D},    {"zwnj", 0x200C},    {"ltrmark", 0x200E},
    {"rtlmark", 0x200F},   {"zwbo", 0x200B},   {"zwnbo", 0x2060},
};

/// Destinations whose text is not the document's. Those that begin with \* are left out anyway.
constexpr std::string_view kSkipped[] = {
    "colortbl",          "stylesheet", "info",       "pict",
    "objdata",           "header",     "headerl",    "headerr",
    "headerf",           "footer",     "footerl",    "footerr",
    "footerf",           "footnote",   "annotation", "listtable",
    "listoverridetable", "revtbl",     "rsidtbl",    "filetbl",
    "fldinst",           "pntext",     "pntxtb",     "pntxta",
    "bkmkstart",         "bkmkend",    "datafield",  "themedata",
    "generator",         "xmlnstbl",   "objclass",   "objname",
    "nonshppict",        "template",   "xe",         "tc",
    "private",           "ftnsep",     "aftnsep",    "listname",
};

class Extractor {
  public:
    explicit Extractor(ByteSpan rtf) : lexer_(rtf) { stack_.reserve(32); }
    std::u16string run();

  private:
    State& state() { return stack_.back(); }
    void open();
    void close();
    void word(const RtfToken& token);
    void symbol(UInt8 byte);
    void character(UInt8 byte);
    bool destination(const RtfToken& token);
    bool setting(const RtfToken& token);
    void fontSetting(const RtfToken& token);
    void unicode(SInt32 value);

    bool isText() const { return !stack_.back().skip && !stack_.back().deleted; }
    void unit(char16_t value);
    void flush();
    UInt32 encoding() const;

    RtfLexer lexer_;
    std::vector<State> stack_{State()};
    std::size_t tooDeep_ = 0;  // groups open beyond the deepest
    bool starred_ = false;     // \* came just before
    SInt32 toSkip_ = 0;        // fallback characters still to come
    bool attachment_ = false;  // the next character stands for one
    UInt32 documentEncoding_ = kTextEncodingWindowsLatin1;
    bool macDocument_ = false;
    SInt32 defaultFont_ = 0;
    SInt32 definedFont_ = 0;
    std::unordered_map<SInt32, UInt32> fonts_;
    std::string run_;
    std::u16string text_;
};

std::u16string Extractor::run() {
    for (RtfToken token = lexer_.next(); token.kind != RtfToken::Kind::end; token = lexer_.next()) {
        if (token.kind == RtfToken::Kind::character) {
            character(token.byte);
            continue;
        }
        flush();
        if (token.kind == RtfToken::Kind::open) {
            open();
        } else if (token.kind == RtfToken::Kind::close) {
            close();
            if (stack_.size() == 1) break;  // what follows the document is none of it
        } else if (toSkip_ > 0) {
            --toSkip_;
        } else if (token.kind == RtfToken::Kind::word) {
            word(token);
        } else {
            symbol(token.byte);
        }
    }
    flush();
    return std::move(text_);
}

void Extractor::open() {
    toSkip_ = 0;
    starred_ = false;
    if (stack_.size() <= kDeepest)
        stack_.push_back(stack_.back());
    else
        ++tooDeep_;
}

void Extractor::close() {
    toSkip_ = 0;
    starred_ = false;
    if (tooDeep_ > 0) {
        --tooDeep_;
        return;
    }
    if (stack_.size() == 1) return;
    const bool wasPicture = state().picture;
    stack_.pop_back();
    if (wasPicture && !state().picture) attachment_ = true;
}

void Extractor::symbol(UInt8 byte) {
    switch (byte) {
        case '*':
            starred_ = true;
            return;
        case '\r':
        case '\n':
            return unit(u'\n');
        case '\t':
            return unit(u'\t');
        case '~':
            return unit(0x00A0);
        case '_':
            return unit(0x2011);
        case '{':
        case '}':
        case '\\':
            return character(byte);
        default:
            return;  // optional hyphens and marks of formulas and indexes
    }
}

void Extractor::word(const RtfToken& token) {
    const bool starred = std::exchange(starred_, false);
    if (destination(token)) return;
    if (starred) {
        state().skip = true;
        return;
    }
    if (setting(token)) return;
    const auto* const known = std::ranges::find(kCharacters, token.name, &Character::word);
    if (known != std::end(kCharacters)) unit(known->unit);
}

/// Words that say what their group is for.
bool Extractor::destination(const RtfToken& token) {
    if (token.name == "fonttbl") {
        state().fonts = state().skip = true;
    } else if (token.name == "NeXTGraphic") {
        state().picture = state().skip = true;
    } else if (std::ranges::find(kSkipped, token.name) != std::end(kSkipped)) {
        state().skip = true;
    } else {
        return false;
    }
    return true;
}

bool Extractor::setting(const RtfToken& token) {
    const std::string_view name = token.name;
    if (name == "u") {
        unicode(token.number);
    } else if (name == "uc") {
        state().fallbacks = std::max(token.number, 0);
    } else if (name == "deleted") {
        state().deleted = !token.hasNumber || token.number != 0;
    } else if (state().fonts) {
        fontSetting(token);
    } else if (name == "f") {
        state().font = token.number;
    } else if (name == "plain") {
        state().font = -1;
    } else if (name == "deff") {
        defaultFont_ = token.number;
    } else if (name == "mac") {
        documentEncoding_ = kTextEncodingMacRoman;
        macDocument_ = true;
    } else if (name == "pc" || name == "pca") {
        documentEncoding_ = encodingForWindowsCodePage(name == "pc" ? 437 : 850);
    } else if (name == "ansicpg" && token.number > 0) {
        const UInt32 known = encodingForWindowsCodePage(static_cast<unsigned>(token.number));
        if (known != kTextEncodingInvalid) documentEncoding_ = known;
    } else {
        return false;
    }
    return true;
}

/// Inside the font table: \f begins a font, the others say what its bytes mean.
void Extractor::fontSetting(const RtfToken& token) {
    if (token.name == "f") {
        definedFont_ = token.number;
        return;
    }
    unsigned page = 0;
    if (token.name == "cpg" && token.number > 0) page = static_cast<unsigned>(token.number);
    if (token.name == "fcharset") {
        if (token.number == kRtfSymbolCharset) fonts_[definedFont_] = kSymbolEncoding;
        // Old writers gave every font of a Macintosh document this set, whatever its text was in.
        if (token.number != 0 || !macDocument_) page = codePageForRtfCharset(token.number);
    }
    const UInt32 known = page == 0 ? kTextEncodingInvalid : encodingForWindowsCodePage(page);
    if (known != kTextEncodingInvalid) fonts_[definedFont_] = known;
}

void Extractor::unicode(SInt32 value) {
    // Values are signed 16-bit by rule; larger ones are written all the same.
    const auto code = static_cast<UInt32>(value < 0 ? value + 0x10000 : value);
    if (code > 0xFFFF && code <= 0x10FFFF) {
        unit(static_cast<char16_t>(0xD7C0 + (code >> 10)));
        unit(static_cast<char16_t>(0xDC00 + (code & 0x3FF)));
    } else if (code <= 0xFFFF) {
        unit(static_cast<char16_t>(code));
    }
    toSkip_ = state().fallbacks;
}

void Extractor::character(UInt8 byte) {
    if (toSkip_ > 0) {
        --toSkip_;
        return;
    }
    if (!isText()) return;
    if (attachment_) return unit(kAttachment);
    run_ += static_cast<char>(byte);
}

void Extractor::unit(char16_t value) {
    if (!isText()) return;
    flush();
    text_ += attachment_ ? kAttachment : value;
    attachment_ = false;
}

UInt32 Extractor::encoding() const {
    const SInt32 font = stack_.back().font < 0 ? defaultFont_ : stack_.back().font;
    const auto known = fonts_.find(font);
    return known == fonts_.end() ? documentEncoding_ : known->second;
}

void Extractor::flush() {
    if (run_.empty()) return;
    const UInt32 wanted = encoding();
    if (wanted == kSymbolEncoding) {
        for (const unsigned char byte : run_)
            text_ += static_cast<char16_t>(byte < 0x80 ? byte : 0xF000 + byte);
    } else if (!decodeText(asBytes(run_), wanted, text_)) {
        decodeText(asBytes(run_), kTextEncodingISOLatin1, text_);
    }
    run_.clear();
}

}  // namespace

bool isRichText(ByteSpan bytes) {
    return asText(bytes).starts_with("{\\rtf");
}

std::u16string plainTextOfRichText(ByteSpan rtf) {
    return Extractor(rtf).run();
}

}  // namespace osa
