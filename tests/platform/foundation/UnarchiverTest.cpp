// Archives: every class that becomes something, what is left out, and what is refused.
#include <CoreFoundation/CFPropertyList.h>
#include <Foundation/Foundation.h>

#include "tests/support/ArchiveBuilder.h"
#include "tests/support/Test.h"

namespace osa {
namespace {

using namespace test::archive;

/// The root as a property list without its XML frame; what is no property list shows as "(null)",
/// what was refused as "!" and the reason.
std::string unarchived(const std::string& bytes) {
    const auto data = test::dataOf(bytes);
    CFTypeRef root = nullptr;
    try {
        root = NSUnarchiver::unarchiveObjectWithData(data.get());
    } catch (const NSException& exception) {
        EXPECT_EQ(exception.name(), "NSArchiverArchiveInconsistency");
        return "! " + exception.reason();
    }
    if (root == nullptr) return "(null)";
    const auto xml = CFRef<CFDataRef>::Adopt(CFPropertyListCreateXMLData(nullptr, root));
    if (!xml) return "(no property list)";
    std::string text = test::bytesOf(xml.get());
    const std::size_t start = text.find('>', text.find("<plist")) + 1;
    text = text.substr(start, text.rfind("</plist>") - start);
    std::erase_if(text, [](char c) { return c == '\n' || c == '\t'; });
    return text;
}

std::string fromHex(std::string_view hex) {
    std::string result;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
        result += static_cast<char>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16));
    return result;
}

class Unarchiver : public testing::Test {
  protected:
    ~Unarchiver() override {
        pool_->release();
        EXPECT_EQ(OSALiveObjectCount(), live_);
    }

    const CFIndex live_ = OSALiveObjectCount();
    NSAutoreleasePool* const pool_ = NSAutoreleasePool::create();
};

/// {"meta-data" = {"kMDItemDescription" = "hi"; "n" = 3}} as the Mac's own archiver writes it,
/// classes and strings shared.
const char kShared[] =
    "040b73747265616d747970656481e8038401408484840c4e5344696374696f6e617279008484084e534f"
    "626a65637400858401690192848484084e53537472696e67019484012b096d6574612d64617461869284"
    "93950292849697126b4d444974656d4465736372697074696f6e86928496970268698692849697016e86"
    "92848484084e534e756d626572008484074e5356616c7565009484012a84959503868686";

TEST_F(Unarchiver, ReadsSharedClassesAndStringsInBothByteOrders) {
    const char* const expected =
        "<dict><key>meta-data</key><dict><key>kMDItemDescription</key><string>hi</string>"
        "<key>n</key><integer>3</integer></dict></dict>";
    std::string bytes = fromHex(kShared);
    EXPECT_EQ(unarchived(bytes), expected);
    bytes.replace(2, 14, "typedstream\x81\x03\xE8");
    EXPECT_EQ(unarchived(bytes), expected);
    std::string longText(300, 'x');
    EXPECT_EQ(unarchived("\x04\x0Btypedstream\x81\x03\xE8" +
                         group("@", object({"NSString"}, group("+", "\x81\x01\x2C" + longText)))),
              "<string>" + longText + "</string>");
}

TEST_F(Unarchiver, KnowsThePropertyListClassesAndLeavesOutTheOthers) {
    const std::string point = object({"NSValue"}, group("*", "\x84\x84" + bytes("{_NSPoint=ff}")) +
                                                      group("{_NSPoint=ff}", "\x01\x02"));
    const std::string font =
        object({"NSFont", "NSObject"},
               group("[4C]", "abcd") +
                   group("{?=i[2{a=@#}]:*!}", "\x05" + string("x") + "\x85\x85\x85\x85\x85"));
    const std::string doubleThreeHalves("\x83\0\0\0\0\0\0\xF8\x3F", 9);
    const std::tuple<const char*, std::string, const char*> rows[] = {
        {"text", string("gr\xC3\xBC\xC3\x9F"), "<string>grüß</string>"},
        {"a class of its own below a known one",
         object({"NSCFString", "NSMutableString", "NSString"}, group("+", bytes("a"))),
         "<string>a</string>"},
        {"attributed text",
         object({"NSAttributedString"}, group("@", string("b")) + group("iI", "\x01\x01")),
         "<string>b</string>"},
        {"a URL",
         object({"NSURL"}, group("c", std::string(1, 0)) + group("@", string("http://x/"))),
         "<string>http://x/</string>"},
        {"a relative URL",
         object({"NSURL"}, group("c", "\x01") + group("@", "\x85") + group("@", string("y"))),
         "<string>y</string>"},
        {"truth", number("c", "\x01"), "<true/>"},
        {"a small number", number("c", "\xFE"), "<integer>-2</integer>"},
        {"numbers of more bytes",
         array({number("i", integer(-70000)), number("S", "\x81\xFF\xFF")}),
         "<array><integer>-70000</integer><integer>65535</integer></array>"},
        {"a fraction", number("d", doubleThreeHalves), "<real>1.5</real>"},
        {"a date", object({"NSDate"}, group("d", integer(86400))),
         "<date>2001-01-02T00:00:00Z</date>"},
        {"bytes", object({"NSMutableData", "NSData"}, group("i", "\x03") + group("[3c]", "abc")),
         "<data>YWJj</data>"},
        {"a set becomes an array", object({"NSSet"}, group("I", "\x01") + group("@", string("s"))),
         "<array><string>s</string></array>"},
        {"the later of equal keys wins",
         dictionary({{string("k"), string("1")}, {string("k"), string("2")}}),
         "<dict><key>k</key><string>2</string></dict>"},
        {"nil as root", "\x85", "(null)"},
        {"an unknown class as a value",
         dictionary({{string("font"), font}, {string("k"), string("v")}}),
         "<dict><key>k</key><string>v</string></dict>"},
        {"a structure in an array", array({point, string("v")}),
         "<array><string>v</string></array>"},
        {"an array in itself (object 0)",
         object({"NSArray"}, group("i", "\x02") + group("@", "\x92") + group("@", string("v"))),
         "<array><string>v</string></array>"},
        {"an object archived before and left out", array({font, "\x95", string("v")}),
         "<array><string>v</string></array>"},
        {"text that is no UTF-8", array({string("\xFF\xFE"), string("v")}),
         "<array><string>v</string></array>"},
        {"an unknown class as root", font, "(null)"},
    };
    for (const auto& [row, root, text] : rows) {
        SCOPED_TRACE(row);
        EXPECT_EQ(unarchived(archive(root)), text);
    }
}

TEST_F(Unarchiver, RefusesDamage) {
    // Arrays of ten references to the array before: a few hundred bytes that stand for 10^9
    // strings.
    std::string bomb = string(std::string(100, 'x'));
    std::string levels = group("@", bomb);  // object 2; its classes are 3 and 4
    int latest = 2;
    for (int level = 0; level < 9; ++level) {
        std::string groups = group("i", integer(10));
        for (int i = 0; i < 10; ++i) groups += group("@", integer(latest - 110));
        levels += group("@", object({"NSArray"}, groups));
        latest += level == 0 ? 3 : 2;
    }
    std::string nested = string("x");
    for (int i = 0; i < 3000; ++i) nested = object({"X"}, group("@", nested));
    const std::string good = archive(string("x"));
    const std::tuple<const char*, std::string, std::string> rows[] = {
        {"nothing", "not an archive", ""},
        {"another kind of archive", "not an archive", "bplist00"},
        {"an older version", "archive of version 3", "\x03" + good.substr(1)},
        {"no root", "archive ends early", good.substr(0, 16)},
        {"a root that is no object", "no root object",
         "\x04\x0Bstreamtyped\x81\xE8\x03" + group("i", "\x01")},
        {"an end in the middle", "archive ends early", good.substr(0, good.size() - 5)},
        {"a reference to nothing", "reference to what", archive("\x99")},
        {"a reference to a class as an object", "reference to what", archive(array({"\x93"}))},
        {"an object without class", "object without a class", archive("\x84\x85\x86")},
        {"a class that is its own parent", "reference to what",
         archive("\x84\x84\x84\x01X\x01\x93\x86")},
        {"a reserved head where an integer is due", "no integer",
         archive(object({"X"}, group("i", "\x90")))},
        {"an unknown type", "unknown type", archive(object({"X"}, group("?", "\x01")))},
        {"unmatched brackets", "malformed type", archive(object({"X"}, group("{a=i", "\x01")))},
        {"an array longer than the archive", "array longer",
         archive(object({"X"}, group("[999999999999!]", "")))},
        {"an array of nothing, over and over", "archive asks for too much",
         archive(object({"X"}, group("[9[9[9[9[9[9{a=!!!!!!}]]]]]]", std::string(20, 'x'))))},
        {"text longer than the archive", "archive ends early",
         archive(object({"NSString"}, group("+", "\x82\xFF\xFF\xFF\x7F")))},
        {"fewer entries than counted", "object with fewer",
         archive(object({"NSDictionary"}, group("i", "\x05")))},
        {"fewer than no elements", "object with fewer",
         archive(object({"NSArray"}, group("i", "\xFB")))},
        {"nested without end", "archive is nested", archive(nested)},
        {"a bomb", "objects are too large",
         archive(object({"NSArray"}, group("i", integer(10)) + levels))},
    };
    for (const auto& [row, reason, bytes] : rows) {
        SCOPED_TRACE(row);
        const std::string result = unarchived(bytes);
        EXPECT_EQ(result.substr(0, reason.size() + 2), "! " + reason);
    }
    EXPECT_EQ(NSUnarchiver::unarchiveObjectWithData(nullptr), nullptr);
}

}  // namespace
}  // namespace osa
