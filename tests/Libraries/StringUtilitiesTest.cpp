// String and line utilities: against slow models on random text, and the Finder's order of names.
#include "Libraries/MacToolboxLib/TBUtilities/StringUtilities.h"

#include <filesystem>
#include <random>

#include "Libraries/MacToolboxLib/TCLString/LineUtilities.h"
#include "tests/support/Library.h"

namespace osa::test {
namespace {

using Lines = std::vector<TCLString>;

std::minstd_rand gRandom(1904);

TCLString randomText(const TCLString& alphabet, std::size_t longest) {
    TCLString text(gRandom() % (longest + 1), 0);
    for (UniChar& unit : text) unit = alphabet[gRandom() % alphabet.size()];
    return text;
}

/// Replaces in place, the leftmost marker first, and looks behind what it put in.
TCLString replaceOneByOne(TCLString text, const Lines& markers, const Lines& values) {
    std::size_t from = 0;
    for (;;) {
        std::size_t first = TCLString::npos;
        std::size_t which = 0;
        for (std::size_t i = 0; i < markers.size(); ++i) {
            const std::size_t found = text.find(markers[i], from);
            if (found < first) first = found, which = i;
        }
        if (first == TCLString::npos) return text;
        text.replace(first, markers[which].size(), values[which]);
        from = first + values[which].size();
    }
}

TEST(StringUtilities, replacingAgreesWithReplacingOneByOne) {
    const Lines markers = {utf16("^0"), utf16("^1"), utf16("^2"), utf16("^3")};
    for (int round = 0; round < 4000; ++round) {
        const TCLString text = randomText(utf16("^^01234a"), 24);
        Lines p;
        for (int i = 0; i < 4; ++i) p.push_back(randomText(utf16("^012x"), 5));
        const auto model = [&](std::ptrdiff_t n) {
            return replaceOneByOne(text, Lines(markers.begin(), markers.begin() + n), p);
        };
        ASSERT_EQ(ReplaceParams(text, p[0]), model(1));
        ASSERT_EQ(ReplaceParams(text, p[0], p[1]), model(2));
        ASSERT_EQ(ReplaceParams(text, p[0], p[1], p[2]), model(3));
        ASSERT_EQ(ReplaceParams(text, p[0], p[1], p[2], p[3]), model(4));
        const TCLString key = randomText(utf16("^0a"), 2) + utf16("a");
        ASSERT_EQ(ReplaceStrings(text, key, p[0]), replaceOneByOne(text, {key}, {p[0]}));
    }
    testing::internal::CaptureStderr();
    EXPECT_EQ(ReplaceStrings(utf16("abc"), gEmptyString, utf16("x")), utf16("abc"));
    EXPECT_NE(testing::internal::GetCapturedStderr().find("failed assertion `key.size() > 0'"),
              std::string::npos);
    EXPECT_EQ(EscapeString(utf16("say \\\"hi\"\r")), utf16("say \\\\\"hi\\\"\r"));
}

/// Unit by unit, as the rules for breaks read.
Lines cutUnitByUnit(const TCLString& text, const TCLString& breaks) {
    Lines lines(1);
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (breaks.find(text[i]) == TCLString::npos) {
            lines.back() += text[i];
            continue;
        }
        if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
        lines.emplace_back();
    }
    return lines;
}

TEST(StringUtilities, cuttingAgreesWithCuttingUnitByUnit) {
    const TCLString units = {'a', 'b', '\n', '\r', '\r', 0x2029, 0x2028, ','};
    for (int round = 0; round < 4000; ++round) {
        const TCLString text = randomText(units, 16);
        Lines lines;
        SplitLines(text, lines);
        ASSERT_EQ(lines, cutUnitByUnit(text, {'\n', '\r', 0x2029}));
        Lines parts = {utf16("kept")};
        SplitString(text, {'\r', ','}, parts);
        ASSERT_EQ(parts.front(), utf16("kept"));
        ASSERT_EQ(Lines(parts.begin() + 1, parts.end()), cutUnitByUnit(text, {'\r', ','}));
        Lines pieces;
        SplitString(text, {','}, pieces);
        ASSERT_EQ(JoinLines(pieces, ','), text) << "what was cut at one unit comes together again";
    }
    EXPECT_EQ(JoinLines({}, ','), gEmptyString);
}

TEST(StringUtilities, caseIsOfAsciiLettersAlone) {
    EXPECT_EQ(ToUppercase(std::string("i\xE9\xFFz[`{@")), "I\xE9\xFFZ[`{@");
    EXPECT_EQ(ToLowercase(TCLString{'A', 'Z', '[', '@', 0xC9, 0x141, 0xFF21}),
              (TCLString{'a', 'z', '[', '@', 0xC9, 0x141, 0xFF21}));
}

TEST(StringUtilities, pascalStringsStopAt255Bytes) {
    for (const auto& [first, second, length] :
         {std::array{250, 10, 255}, {255, 3, 255}, {0, 255, 255}, {3, 4, 7}, {200, 0, 200}}) {
        Str255 to, from;
        std::memset(to, 'a', sizeof to);
        std::memset(from, 'b', sizeof from);
        to[0] = static_cast<unsigned char>(first);
        from[0] = static_cast<unsigned char>(second);
        ConcatPStrings(to, from);
        EXPECT_EQ(to[0], length);
        EXPECT_EQ(std::count(to + 1, to + 1 + length, 'b'), length - first);
    }
    unsigned char itself[256] = "\x02xy";
    ConcatPStrings(itself, itself);
    EXPECT_EQ(std::memcmp(itself, "\x04xyxy", 5), 0);
}

int sign(SInt32 order) {
    return (order > 0) - (order < 0);
}

TEST(FinderOrder, numbersCaseWidthAndForms) {
    const std::tuple<const char*, const char*, int> rows[] = {
        {"Item 9", "item 10", -1},
        {"file2", "file10", -1},
        {"file02", "file2", 0},
        {"READ ME", "Read me", 0},
        {"caf\u00E9", "cafe\u0301", 0},
        {"cafe", "caf\u00E9", -1},
        {"\uFF21\uFF22", "ab", 0},
        {"a-b", "ab", -1},
        {"a b", "a_b", -1},
        {"", "a", -1},
        {"", "", 0},
        {"\u0627\u0661\u0660", "\u0627\u0669", 1},
    };
    for (const auto& [one, other, order] : rows) {
        const TCLString first = utf16(one), second = utf16(other);
        EXPECT_EQ(sign(CompareLikeTheFinder(first, second)), order) << one << other;
        EXPECT_EQ(sign(CompareLikeTheFinder(second, first)), -order) << one;
    }
    EXPECT_EQ(CompareLikeTheFinder(CFStringRef(nullptr), CFSTR("")), 0);
    EXPECT_LT(CompareLikeTheFinder(CFSTR("A2"), CFSTR("a11")), 0);
}

TEST(FinderOrder, isAntisymmetricAndTransitive) {
    Lines names;
    if (const char* const corpus = std::getenv("OSA_CORPUS")) {  // the names of real files
        for (const auto& entry : std::filesystem::recursive_directory_iterator(corpus))
            names.push_back(utf16(entry.path().filename().string()));
        std::shuffle(names.begin(), names.end(), gRandom);
        if (names.size() > 600) names.resize(600);
    }
    for (int i = 0; i < 300; ++i) {
        names.push_back(randomText({'a', 'A', '1', '0', ' ', '-', 0xE9, 0x301, 'e', 0xFF11, 0xD800,
                                    0xDC00, 0, 0x3042, 0x30A2},
                                   6));
    }
    std::stable_sort(names.begin(), names.end(), [](const TCLString& a, const TCLString& b) {
        return CompareLikeTheFinder(a, b) < 0;
    });
    // In a sorted list every pair agrees with its places, which an order with circles would break.
    for (std::size_t i = 0; i < names.size(); ++i) {
        for (std::size_t j = i; j < names.size(); ++j) {
            const int order = sign(CompareLikeTheFinder(names[i], names[j]));
            ASSERT_LE(order, 0);
            ASSERT_EQ(sign(CompareLikeTheFinder(names[j], names[i])), -order);
            if (order == 0 && j > i + 1) {
                ASSERT_EQ(CompareLikeTheFinder(names[i], names[j - 1]), 0);
            }
        }
    }
}

}  // namespace
}  // namespace osa::test
