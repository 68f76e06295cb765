// Text conversion: the tables both ways, what is malformed, and where an encoder stops.
#include "platform/text/TextConverter.h"

#include "platform/text/MacRoman.h"
#include "tests/support/Test.h"

namespace osa {
namespace {

using std::string_view_literals::operator""sv;

TEST(MacRoman, EveryByteSurvivesTheRoundTrip) {
    std::string all;
    for (int i = 0; i < 256; ++i) all.push_back(static_cast<char>(i));
    std::u16string units;
    ASSERT_TRUE(decodeText(asBytes(all), kTextEncodingMacRoman, units));
    EXPECT_EQ(units[0x8E], 0x00E9);
    EXPECT_EQ(units[0xBD], 0x03A9);
    EXPECT_EQ(units[0xC6], 0x2206);
    EXPECT_EQ(units[0xDB], 0x20AC);
    EXPECT_EQ(units[0xF0], 0xF8FF);
    std::string back;
    EXPECT_EQ(encodeText(units, kTextEncodingMacRoman, 0, back), 256u);
    EXPECT_EQ(back, all);
}

TEST(MacRoman, UpperCaseKeepsDiacritics) {
    EXPECT_EQ(macRomanUppercase('z'), 'Z');
    EXPECT_EQ(macRomanUppercase(0x8E), 0x83) << "e acute";
    EXPECT_EQ(macRomanUppercase(0xCF), 0xCE) << "oe ligature";
    EXPECT_EQ(macRomanUppercase(0xD8), 0xD9) << "y diaeresis, whose capital is not in Latin-1";
    EXPECT_EQ(macRomanUppercase(0xD6), 0xD6) << "the division sign is no letter";
    EXPECT_EQ(macRomanUppercase(0xB5), 0xB5) << "the capital of the micro sign is not in the set";
}

const std::tuple<const char*, UInt32, std::string_view, bool, std::u16string_view> kDecodeRows[] = {
    {"UTF-8 of one to four bytes", kTextEncodingUTF8, "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", true,
     u"a\u00E9\u20AC\U0001F600"},
    {"the last character there is", kTextEncodingUTF8, "\xF4\x8F\xBF\xBF", true, u"\U0010FFFF"},
    {"one past the last", kTextEncodingUTF8, "\xF4\x90\x80\x80", false, u""},
    {"overlong slash", kTextEncodingUTF8, "\xC0\xAF", false, u""},
    {"overlong in three bytes", kTextEncodingUTF8, "\xE0\x9F\xBF", false, u""},
    {"surrogate in UTF-8", kTextEncodingUTF8, "\xED\xA0\x80", false, u""},
    {"sequence cut at the end", kTextEncodingUTF8, "12345678\xE2\x82", false, u""},
    {"trail byte missing", kTextEncodingUTF8, "\xC3(", false, u""},
    {"lone trail byte", kTextEncodingUTF8, "\x80", false, u""},
    {"zeros are characters", kTextEncodingUTF8, "a\0b"sv, true, u"a\0b"sv},
    {"Latin-1 takes every byte", kTextEncodingISOLatin1, "\x80\xFF", true, u"\u0080\u00FF"},
    {"ASCII takes no high byte", kTextEncodingASCII, "abc\x80", false, u""},
    {"big-endian units", kTextEncodingUTF16BE, "\x20\xAC", true, u"\u20AC"},
    {"little-endian units", kTextEncodingUTF16LE, "\xAC\x20", true, u"\u20AC"},
    {"half a unit", kTextEncodingUTF16BE, "\0A\0"sv, false, u""},
    {"unpaired surrogates stay", kTextEncodingUTF16BE, "\xDC\x01\xD8\x01", true, u"\xDC01\xD801"},
    {"UTF-32 beyond the last", kTextEncodingUTF32BE, "\0\x11\0\0"sv, false, u""},
    {"UTF-32 little-endian", kTextEncodingUTF32LE, "\0\xF6\x01\0"sv, true, u"\U0001F600"},
    {"NeXTSTEP Latin", kTextEncodingNextStepLatin, "\xD5\xFB", true, u"\u00E0\u00DF"},
    {"Windows Latin-1", kTextEncodingWindowsLatin1, "\x80\x93", true, u"\u20AC\u201C"},
    {"Shift-JIS", 0x0420, "\x93\xFA\x96\x7B", true, u"\u65E5\u672C"},
    {"PC controls are those of ASCII", 0x0400, "\x1A\x1C\x7F\x80", true, u"\x1A\x1C\x7F\u00C7"},
    {"Shift-JIS cut in a character", 0x0420, "\x93\xFA\x96", false, u""},
    {"unknown encoding", 0x7777, "a", false, u""},
    {"nothing at all", kTextEncodingUTF8, "", true, u""},
};

TEST(TextConverter, DecodesStrictly) {
    for (const auto& [name, encoding, bytes, ok, units] : kDecodeRows) {
        SCOPED_TRACE(name);
        std::u16string out = u"kept";
        EXPECT_EQ(decodeText(asBytes(bytes), encoding, out), ok);
        EXPECT_EQ(out, u"kept" + std::u16string(units));
    }
}

using Row =
    std::tuple<const char*, UInt32, std::u16string_view, UInt8, std::size_t, std::string_view>;
const Row kEncodeRows[] = {
    {"stops at the first it cannot hold", kTextEncodingASCII, u"ab\u00E9c", 0, 2, "ab"},
    {"or puts the loss byte and goes on", kTextEncodingASCII, u"ab\u00E9c", '?', 4, "ab?c"},
    {"one loss byte for a surrogate pair", kTextEncodingMacRoman, u"\U0001F600x", '?', 3, "?x"},
    {"an unpaired surrogate has no UTF-8", kTextEncodingUTF8, u"a\xD800", 0, 1, "a"},
    {"UTF-8 of a pair", kTextEncodingUTF8, u"\U0001F600", 0, 2, "\xF0\x9F\x98\x80"},
    {"no mark in UTF-16", kTextEncodingUTF16BE, u"A", 0, 1, "\0A"sv},
    {"ICU stops alike", kTextEncodingWindowsLatin1, u"\u20AC\u4E00z", 0, 1, "\x80"},
    {"ICU goes on alike", kTextEncodingWindowsLatin1, u"\u20AC\U0001F600z", '?', 4, "\x80?z"},
    {"controls are those of ASCII", 0x0420, u"\x1A\x1C\x7F", 0, 3, "\x1A\x1C\x7F"},
    {"ICU with the bad one last", kTextEncodingWindowsLatin1, u"z\u4E00", '?', 2, "z?"},
    {"unknown encoding", 0x7777, u"a", '?', 0, ""},
};

TEST(TextConverter, EncodesUpToWhatTheEncodingHolds) {
    for (const auto& [name, encoding, units, lossByte, converted, bytes] : kEncodeRows) {
        SCOPED_TRACE(name);
        std::string out;
        EXPECT_EQ(encodeText(units, encoding, lossByte, out), converted);
        EXPECT_EQ(out, bytes);
        EXPECT_LE(out.size(), units.size() * maximumBytesPerUnit(encoding));
    }
}

TEST(TextConverter, EveryEncodingOfACodePageHasAConverter) {
    int found = 0;
    for (unsigned page = 1; page < 66000; ++page) {
        const UInt32 encoding = encodingForWindowsCodePage(page);
        if (encoding == kTextEncodingInvalid) continue;
        SCOPED_TRACE(page);
        ++found;
        EXPECT_GT(maximumBytesPerUnit(encoding), 0u);
        std::string bytes;
        std::u16string units;
        EXPECT_EQ(encodeText(std::u16string(5000, u'x'), encoding, 0, bytes), 5000u);
        EXPECT_TRUE(decodeText(asBytes(bytes), encoding, units));
        EXPECT_EQ(units, std::u16string(5000, u'x'));
        if (maximumBytesPerUnit(encoding) != 1) continue;
        for (int byte = 0; byte < 256; ++byte) {
            const std::string one(1, static_cast<char>(byte));
            units.clear();
            if (!decodeText(asBytes(one), encoding, units)) continue;
            EXPECT_EQ(units.size(), 1u);
            bytes.clear();
            EXPECT_EQ(encodeText(units, encoding, 0, bytes), 1u);
            EXPECT_EQ(bytes, one) << "a set of single bytes keeps those it has";
        }
    }
    EXPECT_GT(found, 50);
    EXPECT_EQ(encodingForWindowsCodePage(0), kTextEncodingInvalid);
    EXPECT_EQ(encodingForCharsetName("ISO-8859-5"), 0x0205u);
}

TEST(TextConverter, ThreadsKeepConvertersOfTheirOwn) {
    std::thread threads[4];
    for (std::thread& thread : threads) {
        thread = std::thread([] {
            for (int i = 0; i < 200; ++i) {
                std::u16string units;
                EXPECT_TRUE(decodeText(asBytes("\x93\xFA"), 0x0420, units));
                EXPECT_EQ(units, u"\u65E5");
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace osa
