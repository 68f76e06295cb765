// Property lists: what each form reads, what is refused, and that writers and readers agree.
#include <CoreFoundation/CFPropertyList.h>

#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFNumber.h>

#include "platform/base/ByteWriter.h"
#include "tests/platform/cf/CFTestSupport.h"

namespace {

using std::string_literals::operator""s;
using std::string_view_literals::operator""sv;
using List = CFRef<CFTypeRef>;

class CFPropertyListTest : public CFTest {};

List read(std::string_view bytes, CFPropertyListFormat* format = nullptr,
          CFPropertyListMutabilityOptions options = kCFPropertyListImmutable) {
    return List::Adopt(CFPropertyListCreateWithData(nullptr, osa::test::dataOf(bytes).get(),
                                                    options, format, nullptr));
}

std::string write(const List& list, CFPropertyListFormat format) {
    const auto data =
        CFRef<CFDataRef>::Adopt(CFPropertyListCreateData(nullptr, list.get(), format, 0, nullptr));
    return data ? osa::test::bytesOf(data.get()) : "(null)";
}

struct TextRow {
    const char* name;
    std::string_view bytes;
    const char* description;  ///< "(null)" when refused
};

const TextRow kXMLRows[] = {
    {"every kind",
     "<?xml version='1.0'?><!DOCTYPE plist [<!ENTITY e \">\">]><plist version=\"1.0\"><dict>"
     "<key>i</key><integer> -0x1F </integer><key>r</key><real>+1.5e3</real><key>t</key><true/>"
     "<key>d</key><date>2001-01-02T00:00:00Z</date><key>b</key><data> AQ I\nD= </data>"
     "<key>a</key><array><string/><false></false></array></dict></plist>",
     "{i = -31; r = 1500; t = true; d = 2001-01-02T00:00:00Z; b = <010203>; a = (, false); }"},
    {"entities, sections and comments in text",
     "<string>&lt;&amp;&#65;&#x1F600;<![CDATA[<&]]><!-- - -->z</string>", "<&A\U0001F600<&z"},
    {"line ends become LF, references do not", "<string>a\r\nb\rc&#13;</string>", "a\nb\nc\r"},
    {"what follows is ignored", "<plist><true/></plist>\0\0junk<"sv, "true"},
    {"later keys win in their first place",
     "<dict><key>a</key><string>1</string><key>b</key><true/><key>a</key><string>2</string></dict>",
     "{a = 2; b = true; }"},
    {"largest unsigned integer", "<integer>18446744073709551615</integer>", "18446744073709551615"},
    {"smallest integer", "<integer>-9223372036854775808</integer>", "-9223372036854775808"},
    {"integer out of range", "<integer>18446744073709551616</integer>", "(null)"},
    {"integer with letters", "<integer>12a</integer>", "(null)"},
    {"not a number", "<real>NaN</real>", "nan"},
    {"the last digits of data", "<data>+/Az</data>", "<fbf033>"},
    {"padding inside of data starts anew", "<data>QQ==Qg==</data>", "<4142>"},
    {"unknown entity", "<string>&nbsp;</string>", "(null)"},
    {"reference to no character", "<string>&#xD800;</string>", "(null)"},
    {"wrong end tag", "<array><string>a</array></string>", "(null)"},
    {"key without value", "<dict><key>a</key></dict>", "(null)"},
    {"value without key", "<dict><true/></dict>", "(null)"},
    {"text among values", "<array>x<true/></array>", "(null)"},
    {"unknown element", "<array><set/></array>", "(null)"},
    {"no value", "<plist></plist>", "(null)"},
    {"impossible date", "<date>2001-02-30T00:00:00Z</date>", "(null)"},
    {"cut in a comment", "<array><!-- </array>", "(null)"},
    {"little-endian UTF-16 with mark", "\xFF\xFE<\0t\0r\0u\0e\0/\0>\0"sv, "true"},
    {"big-endian UTF-16 without mark", "\0<\0t\0r\0u\0e\0/\0>"sv, "true"},
    {"UTF-8 mark", "\xEF\xBB\xBF<string>\xC3\xA9</string>", "\u00E9"},
    {"declared encoding", "<?xml version=\"1.0\" encoding='ISO-8859-1'?><string>\xE9</string>",
     "\u00E9"},
    {"malformed UTF-8", "<string>\xE9</string>", "(null)"},
};

const TextRow kOldStyleRows[] = {
    {"every kind", "{a = (1, \"two\" , ); b=<01 aB>; 'c d' = {}; /* no */ e; // end\n}",
     "{a = (1, two); b = <01ab>; c d = {}; e = e; }"},
    {"escapes", "\"\\n\\\"\\101\\341\\U20aC\\u41\\q\\\n\"", "\n\"A\u00C6\u20ACAq\n"},
    {"surrogates as two escapes", "\"\\UD83D\\UDE00\"", "\U0001F600"},
    {"characters of words", "$Ab/c:d.e-f_9", "$Ab/c:d.e-f_9"},
    {"strings table", "/* c */ \"k\" = \"v\"; k2 = (x); alone;",
     "{k = v; k2 = (x); alone = alone; }"},
    {"table without the last semicolon", "a = b; c = d", "{a = b; c = d; }"},
    {"only comments", " // nothing\n", "{}"},
    {"padded with zeros", "{a=b}\0\0"sv, "{a = b; }"},
    {"UTF-16 table with mark", "\xFE\xFF\0a\0=\x20\xAC\0;"sv, "(null)"},
    {"UTF-16 table with mark, quoted", "\xFE\xFF\0a\0=\0\"\x20\xAC\0\"\0;"sv, "{a = \u20AC; }"},
    {"bytes that are no UTF-8 are Mac Roman", "\"caf\x8E\"", "caf\u00E9"},
    {"data that begins like an element", "<dada>", "<dada>"},
    {"odd number of digits", "<123>", "(null)"},
    {"two values", "a b", "(null)"},
    {"something behind", "{} x", "(null)"},
    {"no end of string", "\"abc", "(null)"},
    {"no end of comment", "{} /* ", "(null)"},
    {"no end of array", "(a, b", "(null)"},
    {"missing semicolon inside", "{a = b c = d;}", "(null)"},
    {"no bytes", "", "(null)"},
};

TEST_F(CFPropertyListTest, ReadsText) {
    const auto check = [](const TextRow& row, CFPropertyListFormat expected) {
        SCOPED_TRACE(row.name);
        CFPropertyListFormat format = 0;
        const List list = read(row.bytes, &format);
        EXPECT_EQ(description(list.get()), row.description);
        if (list) {
            EXPECT_EQ(format, expected);
        }
    };
    for (const TextRow& row : kXMLRows) check(row, kCFPropertyListXMLFormat_v1_0);
    for (const TextRow& row : kOldStyleRows) check(row, kCFPropertyListOpenStepFormat);
}

/// A binary list of the given objects, the first of which is the top one.
struct BinaryBuilder {
    std::vector<std::string> objects;
    std::uint64_t top = 0;
    std::uint64_t countOffset = 0;  ///< added to the true count of objects
    std::uint8_t offsetSize = 1;
    std::uint8_t referenceSize = 1;
    std::uint64_t tableOffset = 0;  ///< 0: the true one

    std::string build() const {
        osa::ByteWriter writer;
        writer.text("bplist00");
        std::vector<std::uint64_t> offsets;
        for (const std::string& object : objects) {
            offsets.push_back(writer.size());
            writer.text(object);
        }
        const std::uint64_t table = writer.size();
        for (const std::uint64_t offset : offsets)
            writer.bigEndian(offset, offsetSize ? offsetSize : 1);
        writer.fill(6).u8(offsetSize).u8(referenceSize);
        writer.u64(objects.size() + countOffset).u64(top).u64(tableOffset ? tableOffset : table);
        return writer.takeText();
    }
};

TEST_F(CFPropertyListTest, ReadsBinary) {
    const std::tuple<const char*, BinaryBuilder, const char*> rows[] = {
        {"dictionary",
         {{"\xD2\1\2\3\4", "Qa", "Qb", "\x10\xFF", "\xA1\1"}},
         "{a = 255; b = (a); }"},
        {"scalars",
         {{"\xA9\1\2\3\4\5\6\7\x08\x09", "\x11\xFF\xFF", "\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFE",
           "\x14\0\0\0\0\0\0\0\0\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s, "\x22\x3F\xC0\0\0"s,
           "\x33\xBF\xF0\0\0\0\0\0\0"s, "\x62\0A\x20\xAC"s, "\x72\xC3\xA9", "\x42\1\2",
           "\x81\1\2"}},
         "(65535, -2, 18446744073709551615, 1.5, 2000-12-31T23:59:59Z, A\u20AC, \u00E9, <0102>, "
         "{CF$UID = 258; })"},
        {"truth and nothing", {{"\xA3\1\2\3", "\x08", "\x09", "\0"s}}, "(false, true, <null>)"},
        {"long count", {{"\x5F\x10\0200123456789abcdef"}}, "0123456789abcdef"},
        {"high bytes in an ASCII string", {{"Q\x8E"}}, "\u00E9"},
        {"the top object is not the first", {{"Qa", "Qb"}, 1}, "b"},
        {"wide offsets and references", {{"\xA1\0\1"s, "Qa"}, 0, 0, 3, 2}, "(a)"},
        {"array inside itself", {{"\xA1\0"s}}, "(null)"},
        {"array inside itself further down", {{"\xA1\1", "\xA1\0"s}}, "(null)"},
        {"reference behind the last object", {{"\xA1\1"}}, "(null)"},
        {"key that is no string", {{"\xD1\1\1", "\x10\1"}}, "(null)"},
        {"content longer than the file", {{"\x4F\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"}}, "(null)"},
        {"negative count", {{"\x4F\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"}}, "(null)"},
        {"count that is no integer", {{"\x5F\x51\1"}}, "(null)"},
        {"real of 16 bytes", {{"\x24" + std::string(16, 0)}}, "(null)"},
        {"unknown marker", {{"\xF0"}}, "(null)"},
        {"no objects", {{}, 0}, "(null)"},
        {"top behind the last", {{"Qa"}, 1}, "(null)"},
        {"more objects than the table has", {{"Qa"}, 0, 1}, "(null)"},
        {"count that overflows with the offset size", {{"Qa"}, 0, UINT64_MAX / 8, 8}, "(null)"},
        {"table behind the end", {{"Qa"}, 0, 0, 1, 1, UINT64_MAX}, "(null)"},
        {"table before the objects", {{"Qa"}, 0, 0, 1, 1, 8}, "(null)"},
        {"no offset size", {{"Qa"}, 0, 0, 0}, "(null)"},
        {"no reference size", {{"\xA1\1", "Qa"}, 0, 0, 1, 0}, "(null)"},
    };
    for (const auto& [name, list, wantedDescription] : rows) {
        SCOPED_TRACE(name);
        const std::string bytes = list.build();
        CFPropertyListFormat format = 0;
        EXPECT_EQ(description(read(bytes, &format).get()), wantedDescription);
        for (std::size_t cut = 0; cut < bytes.size(); ++cut) read(bytes.substr(0, cut));
    }
    EXPECT_FALSE(read("bplist15" + BinaryBuilder{{"Qa"}}.build().substr(8))) << "another form";
}

std::string nested(std::size_t levels) {
    return std::string(levels, '(') + std::string(levels, ')');
}

TEST_F(CFPropertyListTest, DepthAndRepetitionAreLimited) {
    const List deepest = read(nested(512));
    EXPECT_TRUE(deepest);
    EXPECT_FALSE(read(nested(513)));
    std::string xml;
    for (int i = 0; i < 100000; ++i) xml += "<array>";
    EXPECT_FALSE(read(xml));
    EXPECT_TRUE(read(write(deepest, kCFPropertyListBinaryFormat_v1_0)));
    EXPECT_TRUE(read(write(deepest, kCFPropertyListXMLFormat_v1_0)));

    BinaryBuilder bomb;  // each array holds the next one twice
    const auto lengthen = [&](char levels) {
        bomb.objects.clear();
        for (char i = 1; i <= levels; ++i) bomb.objects.push_back({'\xA2', i, i});
        bomb.objects.push_back("Qa");
        return bomb.build();
    };
    EXPECT_TRUE(read(lengthen(18))) << "half a million values are allowed";
    EXPECT_FALSE(read(lengthen(30)));
    EXPECT_FALSE(read(lengthen(30), nullptr, kCFPropertyListMutableContainers));

    const auto itself =
        CFRef<CFMutableArrayRef>::Adopt(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
    CFArrayAppendValue(itself.get(), itself.get());
    EXPECT_EQ(write(List::Retain(itself.get()), kCFPropertyListXMLFormat_v1_0), "(null)");
    EXPECT_FALSE(CFPropertyListIsValid(itself.get(), kCFPropertyListBinaryFormat_v1_0));
    CFArrayRemoveAllValues(itself.get());
}

TEST_F(CFPropertyListTest, WritersAndReadersAgree) {
    std::string xml =
        "<dict><key>text</key><string>a&#13;&lt;\u20AC\U0001F600</string><key></key><array/>"
        "<key>i</key><array><integer>0</integer><integer>255</integer><integer>256</integer>"
        "<integer>-1</integer><integer>4294967296</integer><integer>18446744073709551615</integer>"
        "<real>1</real><integer>1</integer><real>0.14285714285714285</real>"
        "<integer>70000</integer><real>-infinity</real></array>"
        "<key>data</key><data>AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8gISIjJCUmJygpKissLS4vMDEy"
        "</data><key>more</key><data>+/Az</data><key>yes</key><true/>"
        "<key>date</key><date>1904-01-01T00:00:00Z</date>"
        "<key>id</key><dict><key>CF$UID</key><integer>300</integer></dict><key>many</key><array>";
    // Enough for references of two bytes, and for offsets of three.
    for (int i = 0; i < 300; ++i)
        xml += "<string>" + std::to_string(i) + std::string(250, 'x') + "</string><string>\u20AC" +
               std::to_string(i) + "</string>";
    const List list = read(xml + "</array></dict>");
    ASSERT_TRUE(list);
    for (const CFPropertyListFormat form :
         {kCFPropertyListXMLFormat_v1_0, kCFPropertyListBinaryFormat_v1_0}) {
        SCOPED_TRACE(form);
        const std::string bytes = write(list, form);
        CFPropertyListFormat format = 0;
        const List back = read(bytes, &format);
        EXPECT_EQ(format, form);
        EXPECT_TRUE(CFEqual(list.get(), back.get())) << description(back.get());
        EXPECT_EQ(write(back, form), bytes);
        EXPECT_EQ(write(back, kCFPropertyListXMLFormat_v1_0),
                  write(list, kCFPropertyListXMLFormat_v1_0));
    }
    EXPECT_EQ(write(read("(a, a)"), kCFPropertyListBinaryFormat_v1_0),
              (BinaryBuilder{{"\xA2\1\1", "Qa"}}.build()))
        << "equal scalars are one object";
    EXPECT_EQ(write(List::Retain(kCFNull), kCFPropertyListXMLFormat_v1_0), "(null)");
    EXPECT_EQ(write(list, kCFPropertyListOpenStepFormat), "(null)");
}

TEST_F(CFPropertyListTest, MutableTreesShareNothing) {
    const std::string twice = BinaryBuilder{{"\xA2\1\1", "\xA1\2", "Qa"}}.build();
    const List list = read(twice, nullptr, kCFPropertyListMutableContainersAndLeaves);
    const auto array = static_cast<CFArrayRef>(list.get());
    const auto first =
        static_cast<CFMutableArrayRef>(const_cast<void*>(CFArrayGetValueAtIndex(array, 0)));
    const List copy =
        List::Adopt(CFPropertyListCreateDeepCopy(nullptr, list.get(), kCFPropertyListImmutable));
    CFStringAppend(
        static_cast<CFMutableStringRef>(const_cast<void*>(CFArrayGetValueAtIndex(first, 0))),
        CFSTR("b"));
    CFArrayAppendValue(first, CFSTR("c"));
    EXPECT_EQ(description(list.get()), "((ab, c), (a))");
    EXPECT_EQ(description(copy.get()), "((a), (a))");
    CFStringRef error = nullptr;
    EXPECT_EQ(CFPropertyListCreateFromXMLData(nullptr, osa::test::dataOf("(").get(), 0, &error),
              nullptr);
    EXPECT_TRUE(StringRef::Adopt(error));
}

}  // namespace
