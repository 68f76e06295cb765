// Conversions of text: where each stops, what it throws, and that nothing is read or written past
// an end.
#include "Libraries/MacToolboxLib/TCLString/TCLString.h"

#include <CoreFoundation/CFNumber.h>

#include "tests/support/Library.h"

using osa::test::thrown;

namespace {

CFRef<CFStringRef> repeated(UniChar unit, std::size_t count) {
    const TCLString units(count, unit);
    return CFRef<CFStringRef>::Adopt(ToCFString(units));
}

TCLString units(const char16_t* text) {
    TCLString result;
    for (; *text != 0; ++text) result.push_back(static_cast<UniChar>(*text));
    return result;
}

TEST(SniffTextEncoding, LooksAtMarksThenAtZeroBytesInItsOrder) {
    const UInt32 system = CFStringGetSystemEncoding();
    const std::tuple<std::string, UInt32> rows[] = {
        {"\xEF\xBB\xBF\x41", kCFStringEncodingUTF8},
        {"\xEF\xBB", system},
        {{"\xFF\xFE\x41\x00", 4}, kCFStringEncodingUTF16LE},
        {"\xFE\xFF", kCFStringEncodingUTF16BE},
        {{"\x00\x41", 2}, kCFStringEncodingUTF16BE},
        {{"\x41\x00", 2}, kCFStringEncodingUTF16LE},
        {{"\x00\x00", 2}, kCFStringEncodingUTF16BE},
        {"\xFF\x41", system},
        {{"\xFE\x00", 2}, kCFStringEncodingUTF16LE},
        {{"\xFF\x00", 2}, kCFStringEncodingUTF16LE},
        {"A", system},
        {"", system},
    };
    for (const auto& [bytes, encoding] : rows)
        EXPECT_EQ(SniffTextEncoding(bytes), encoding) << bytes;
    EXPECT_EQ(SniffTextEncoding(nullptr, 9), system);
    EXPECT_EQ(SniffTextEncoding(SHandle()), system);
    const UniChar letter = 'A';
    const bool littleEndian = *reinterpret_cast<const unsigned char*>(&letter) == 'A';
    EXPECT_EQ(SniffTextEncoding(TCLString(1, letter)),
              littleEndian ? kCFStringEncodingUTF16LE : kCFStringEncodingUTF16BE);
}

TEST(ToTCLString, ReadsMacRomanByTableAndAsciiAsSignedBytes) {
    EXPECT_EQ(ToTCLString("\xE9", 1, kCFStringEncodingASCII), TCLString(1, 0xFFE9));
    EXPECT_EQ(ToTCLString("caf\x8E", 4, kCFStringEncodingMacRoman), units(u"caf\u00E9"));
    EXPECT_EQ(ToTCLString(static_cast<SInt32>(-2147483647 - 1)), units(u"-2147483648"));
    EXPECT_EQ(OSTypeToTCLString('TEXT'), units(u"TEXT"));
    EXPECT_EQ(OSTypeToTCLString(0xA5000041), TCLString({0x2022, 0, 0, 'A'}));
    EXPECT_EQ(thrown([] { ToTCLString("\xC3\x28", 2, kCFStringEncodingUTF8); }),
              kTextMalformedInputErr);
}

TEST(ToTCLString, DropsTheOddByteOfADescriptorWithoutWritingIt) {
    AEDesc desc;
    ASSERT_EQ(AECreateDesc(typeUnicodeText, "a\0b\0c", 5, &desc), noErr);
    EXPECT_EQ(ToTCLString(&desc).size(), 2U);
    AEDisposeDesc(&desc);
    testing::internal::CaptureStderr();
    EXPECT_EQ(thrown([] { ToTCLString(static_cast<const AEDesc*>(nullptr)); }), paramErr);
    EXPECT_NE(testing::internal::GetCapturedStderr().find(
                  "failed assertion `desc->descriptorType == typeUnicodeText'"),
              std::string::npos);
}

TEST(FromCFString, FitsPascalStringsOfAtMost254Bytes) {
    unsigned char pascal[256];
    FromCFString(repeated('a', 254).get(), pascal, kCFStringEncodingMacRoman);
    EXPECT_EQ(pascal[0], 254);
    const auto failure = [&](std::size_t length) {
        return thrown(
            [&] { FromCFString(repeated('a', length).get(), pascal, kCFStringEncodingMacRoman); });
    };
    testing::internal::CaptureStderr();
    EXPECT_EQ(failure(255), cfStringConversionErr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "255 units pass the assertion";
    testing::internal::CaptureStderr();
    EXPECT_EQ(failure(256), cfStringConversionErr);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("CFStringGetLength(s) <= 255"),
              std::string::npos);
    EXPECT_EQ(
        thrown([&] { FromCFString(repeated(0xE9, 200).get(), pascal, kCFStringEncodingUTF8); }),
        cfStringConversionErr)
        << "the limit is in bytes";
    FromCFString(static_cast<CFStringRef>(nullptr), pascal, kCFStringEncodingMacRoman);
    EXPECT_EQ(pascal[0], 0);
}

TEST(FromCFString, GivesBytesUpToTheFirstThatTheEncodingLacks) {
    std::string bytes;
    const auto ab = CFRef<CFStringRef>::Adopt(ToCFString(units(u"ab\u00E9z")));
    FromCFString(ab.get(), bytes, kCFStringEncodingASCII);
    EXPECT_EQ(bytes, "ab");
    EXPECT_EQ(thrown([&] { FromCFString(repeated(0xE9, 1).get(), bytes, kCFStringEncodingASCII); }),
              cfStringConversionErr);
    FromCFString(repeated(0x65E5, 5000).get(), bytes, kCFStringEncodingUTF8);
    EXPECT_EQ(bytes.size(), 15000U);
}

TEST(FromCFString, TakesUnitsOfBothStoragesAndNothingOfOtherObjects) {
    TCLString out(3, 'x');
    FromCFString(repeated('a', 7).get(), out, 0);
    EXPECT_EQ(out, TCLString(7, 'a'));
    FromCFString(repeated(0xD800, 7).get(), out, 0);
    EXPECT_EQ(out, TCLString(7, 0xD800)) << "unpaired surrogates pass";
    FromCFString(reinterpret_cast<CFStringRef>(kCFBooleanTrue), out, 0);
    EXPECT_TRUE(out.empty());
    HFSUniStr255 name;
    FromCFString(repeated(0x65E5, 300).get(), name);
    EXPECT_EQ(name.length, 255);
    EXPECT_EQ(ToTCLString(name), TCLString(255, 0x65E5));
    name.length = 300;
    EXPECT_EQ(ToTCLString(name).size(), 255U) << "a count beyond the record is not believed";
}

TEST(ToCFString, HonoursMarksOfUnicodeAndRefusesWhatIsNone) {
    const auto marked =
        CFRef<CFStringRef>::Adopt(ToCFString("\xFE\xFF\x00\x41", 4, kCFStringEncodingUnicode));
    EXPECT_EQ(CFStringGetLength(marked.get()), 1);
    const auto empty = CFRef<CFStringRef>::Adopt(ToCFString("", 0, kCFStringEncodingMacRoman));
    EXPECT_EQ(CFStringGetLength(empty.get()), 0);
    const auto longer =
        CFRef<CFMutableStringRef>::Adopt(ToCFMutableString("ab", 2, kCFStringEncodingASCII));
    CFStringAppend(longer.get(), marked.get());
    EXPECT_EQ(ToTCLString(longer.get()), units(u"abA"));
    EXPECT_EQ(thrown([] { ToCFString("\x80", 1, kCFStringEncodingASCII); }),
              kTextMalformedInputErr);
    testing::internal::CaptureStderr();
    EXPECT_EQ(thrown([] { ToCFString(static_cast<const unsigned char*>(nullptr)); }),
              kTextMalformedInputErr);
    EXPECT_EQ(thrown([] { ToCFString(static_cast<const char*>(nullptr), 0, 0); }),
              kTextMalformedInputErr);
    EXPECT_NE(testing::internal::GetCapturedStderr().find(": failed assertion `bytes'"),
              std::string::npos);
}

TEST(TCLLocalizedString, AnswersTheKeyWhereThereIsNoEntry) {
    EXPECT_EQ(TCLLocalizedString(units(u"no such key")), units(u"no such key"));
    EXPECT_EQ(TCLLocalizedString(CFSTR("key"), CFSTR("table")), units(u"key"));
}

}  // namespace
