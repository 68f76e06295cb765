// Rich text to plain text, rule by rule, with the dialect that the Mac writes.
#include "platform/foundation/RichText.h"

#include "platform/text/TextConverter.h"
#include "tests/support/Test.h"

namespace osa {
namespace {

std::string plain(const std::string& rtf) {
    return utf8FromUTF16(plainTextOfRichText(asBytes(rtf)));
}

const char kHead[] =
    "{\\rtf1\\ansi\\ansicpg1252\\cocoartf2639\n"
    "{\\fonttbl\\f0\\fswiss\\fcharset0 Helvetica;\\f1\\fnil\\fcharset128 "
    "Hiragino;\\f2\\fcharset204 "
    "Times;\\f3\\fcharset2 Symbol;{\\f4\\fnil Old;}}\n"
    "{\\colortbl;\\red255\\green255\\blue255;}{\\*\\expandedcolortbl;;}\n"
    "\\pard\\tx720\\pardirnatural\n\\f0\\fs24 ";

TEST(RichText, GivesTheCharactersOfADocument) {
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"letters in the document's set", "Caf\\'e9 \\'93x\\'94", "Café “x”"},
        {"bytes that should have been escaped", "Caf\xE9", "Café"},
        {"ends of paragraphs", "a\\\nb\\\r\nc\\par d\ne", "a\nb\nc\nde"},
        {"forced line end, page, tab", "a\\line b\\page c\\tab d", "a\u2028b\fc\td"},
        {"two bytes a character", "\\f1 \\'93\\'fa\\'96\\'7b", "日本"},
        {"second byte of a character unescaped", "\\f1 \\'83A", "ア"},
        {"font of a group ends with it", "{\\f2 \\'e4}\\'e4", "дä"},
        {"font without a set", "\\f4 \\'e9", "é"},
        {"a symbol font keeps its own", "\\f3 \\'b7", "\uF0B7"},
        {"plain text goes back to the default font", "\\f2 \\plain\\'e4", "ä"},
        {"units without fallbacks", "\\uc0\\u8364 \\u55357 \\u56832 x", "€😀x"},
        {"fallbacks are skipped, escaped ones as one",
         "\\u8364 ?\\u233\\'65\\uc2\\u233 \\'65\\'27x", "€ééx"},
        {"fallback counts end with their group", "{\\uc0 a}\\u233 ?b", "aéb"},
        {"a brace ends the fallbacks", "{\\uc5\\u233 }b", "éb"},
        {"negative units and large characters", "\\uc0\\u-3913 \\u128512 .", "\uF0B7😀."},
        {"words that are characters", "\\ldblquote\\endash\\rdblquote\\~\\_\\bullet",
         "“–”\u00A0\u2011•"},
        {"escaped braces", "a\\{b\\}\\\\c", "a{b}\\c"},
        {"unknown groups are left out, their words not", "{\\*\\foo x}{\\foo y}", "y"},
        {"link text without its address",
         "{\\field{\\*\\fldinst{HYPERLINK \"http://x/\"}}{\\fldrslt link}}", "link"},
        {"list markers stay", "{\\listtext\t\\'95\t}item", "\t•\titem"},
        {"hidden text stays, deleted text goes", "{\\v hidden}{\\deleted gone}", "hidden"},
        {"cells end as paragraphs", "\\trowd a\\cell b\\cell\\row c", "a\nb\nc"},
        {"binary data is no text", "{\\pict\\bin4 }}}}x}a", "a"},
        {"attachments are one character each",
         "{{\\NeXTGraphic a b.png \\width1 \\height2\n}\\'ac}b{{\\NeXTGraphic c.png}¬}",
         "\uFFFCb\uFFFC"},
        {"text behind the document is none of it", "a}b", "a"},
        {"numbers beyond all bounds", "\\uc99999999999999999999\\fs-99999999999 a", "a"},
    };
    for (const auto& [row, source, text] : rows) {
        SCOPED_TRACE(row);
        std::string body = source;
        // The one character here that is not ASCII stands for a Latin-1 byte in the file.
        if (const auto sign = body.find("¬"); sign != std::string::npos)
            body.replace(sign, 2, "\xAC");
        EXPECT_EQ(plain(kHead + body + "}"), text);
    }
}

TEST(RichText, HonoursTheDocumentsSet) {
    EXPECT_EQ(plain("{\\rtf1\\mac{\\fonttbl\\f0\\fcharset0 Geneva;}\\f0 caf\\'8e}"), "café");
    EXPECT_EQ(plain("{\\rtf1\\ansi\\ansicpg932 \\'93\\'fa}"), "日");
    EXPECT_EQ(plain("{\\rtf1\\pc \\'82}"), "é");
    EXPECT_EQ(plain("{\\rtf1\\ansi\\ansicpg1252\\deff1{\\fonttbl\\f1\\fcharset77 G;}\\'8e}"), "é");
}

TEST(RichText, SurvivesDamage) {
    EXPECT_FALSE(isRichText(asBytes("<html>")));
    EXPECT_TRUE(isRichText(asBytes("{\\rtf1}")));
    EXPECT_EQ(plain("{\\rtf1 cut {off"), "cut off");
    EXPECT_EQ(plain("{\\rtf1 a\\"), "a");
    const std::string deep(100000, '{');
    EXPECT_EQ(plain("{\\rtf1 " + deep + "a" + std::string(100000, '}') + "b}c"), "ab");
}

}  // namespace
}  // namespace osa
