// CFString through its published interface: both ways of storage behind every function.
#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFUUID.h>

#include "tests/platform/cf/CFTestSupport.h"

namespace {

using std::string_view_literals::operator""sv;

class CFStringTest : public CFTest {};

StringRef fromBytes(std::string_view bytes, CFStringEncoding encoding, bool external = true) {
    return StringRef::Adopt(
        CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
                                static_cast<CFIndex>(bytes.size()), encoding, external));
}

// text: UTF-8, or "(null)"
using Row = std::tuple<const char*, CFStringEncoding, std::string_view, const char*, bool>;
const Row kBytesRows[] = {
    {"Mac Roman takes every byte", kCFStringEncodingMacRoman, "caf\x8E\xDB", "caf\u00E9\u20AC",
     true},
    {"a mark in Mac Roman is text", kCFStringEncodingMacRoman, "\xFE\xFF", "\u02DB\u02C7", true},
    {"UTF-8 mark is dropped", kCFStringEncodingUTF8, "\xEF\xBB\xBFok", "ok", true},
    {"UTF-8 beyond ASCII", kCFStringEncodingUTF8, "\xC3\xA9", "\u00E9", false},
    {"malformed UTF-8", kCFStringEncodingUTF8, "a\xC3", "(null)", false},
    {"high byte in ASCII", kCFStringEncodingASCII, "\xE9", "(null)", false},
    {"UTF-16 obeys a big-endian mark", kCFStringEncodingUTF16, "\xFE\xFF\0A"sv, "A", false},
    {"UTF-16 obeys a little-endian mark", kCFStringEncodingUTF16, "\377\376A\0"sv, "A", false},
    {"the mark overrules the named order", kCFStringEncodingUTF16BE, "\377\376A\0"sv, "A", false},
    {"UTF-16 without mark is the host's", kCFStringEncodingUTF16, "A\0"sv, "A", false},
    {"UTF-32 little-endian mark", kCFStringEncodingUTF32, "\xFF\xFE\0\0A\0\0\0"sv, "A", false},
    {"odd size in UTF-16", kCFStringEncodingUTF16, "A\0B"sv, "(null)", false},
    {"unknown encoding", 0x4321, "a", "(null)", false},
    {"nothing is an empty string", kCFStringEncodingUTF8, "", "", true},
};

TEST_F(CFStringTest, DecodesExternalBytes) {
    for (const auto& [name, encoding, bytes, wantedText, wantedKeptAsBytes] : kBytesRows) {
        SCOPED_TRACE(name);
        const StringRef string = fromBytes(bytes, encoding);
        EXPECT_EQ(text(string), wantedText);
        const bool keptAsBytes = string && CFStringGetCharactersPtr(string.get()) == nullptr;
        EXPECT_EQ(keptAsBytes, wantedKeptAsBytes);
    }
    EXPECT_EQ(CFStringGetLength(fromBytes("\xEF\xBB\xBF", kCFStringEncodingUTF8, false).get()), 1)
        << "a mark inside the program is text";
}

TEST_F(CFStringTest, StorageDoesNotShow) {
    const StringRef narrow = fromBytes("\216a", kCFStringEncodingMacRoman);
    const StringRef wide = makeString("\u00E9a");
    EXPECT_TRUE(CFEqual(narrow.get(), wide.get()));
    EXPECT_EQ(CFHash(narrow.get()), CFHash(wide.get()));
    UniChar units[2] = {42, 42};
    CFStringGetCharacters(narrow.get(), CFRangeMake(0, 1), units);
    EXPECT_EQ(units[0], 0xE9);
    EXPECT_EQ(units[1], 42) << "written behind the range";
    EXPECT_EQ(CFStringGetCharactersPtr(wide.get())[0], 0xE9);
    EXPECT_STREQ(CFStringGetCStringPtr(narrow.get(), kCFStringEncodingMacRoman), "\216a");
    EXPECT_EQ(CFStringGetCStringPtr(narrow.get(), kCFStringEncodingUTF8), nullptr);
}

TEST_F(CFStringTest, GetBytesStopsAtWholeCharacters) {
    const StringRef string = makeString("a\u00E9\U0001F600z");
    using Row =
        std::tuple<const char*, CFStringEncoding, UInt8, CFIndex, CFIndex, std::string_view>;
    const Row rows[] = {
        {"all of it", kCFStringEncodingUTF8, 0, 8, 5, "a\xC3\xA9\xF0\x9F\x98\x80z"},
        {"room ends in a character", kCFStringEncodingUTF8, 0, 6, 2, "a\xC3\xA9"},
        {"room ends between two surrogates", kCFStringEncodingUTF16BE, 0, 6, 2, "\0a\0\xE9"sv},
        {"stops at what cannot be converted", kCFStringEncodingMacRoman, 0, 20, 2, "a\x8E"},
        {"converts nothing at all", kCFStringEncodingASCII, 0, 0, 0, ""},
        {"loss byte", kCFStringEncodingASCII, '?', 20, 5, "a??z"},
    };
    for (const auto& [name, encoding, lossByte, room, converted, bytes] : rows) {
        SCOPED_TRACE(name);
        UInt8 buffer[20];
        CFIndex used = -1;
        EXPECT_EQ(CFStringGetBytes(string.get(), CFRangeMake(0, 5), encoding, lossByte, false,
                                   buffer, room, &used),
                  converted);
        EXPECT_EQ(std::string_view(reinterpret_cast<char*>(buffer), static_cast<std::size_t>(used)),
                  bytes);
    }
    UInt8 marked[4];
    CFIndex used = 0;
    CFStringGetBytes(string.get(), CFRangeMake(0, 1), kCFStringEncodingUTF16, 0, true, marked, 4,
                     &used);
    EXPECT_EQ(used, 4) << "external host-order text begins with a mark";
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(5, kCFStringEncodingUTF8), 15);
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(5, 0x4321), kCFNotFound);
}

TEST_F(CFStringTest, PascalAndCStringsFitWholeOrNotAtAll) {
    for (const CFIndex length : {0, 253, 254, 255, 256}) {
        SCOPED_TRACE(length);
        const StringRef string = makeString(std::string(static_cast<std::size_t>(length), 'x'));
        unsigned char pascal[256] = {42};
        EXPECT_EQ(CFStringGetPascalString(string.get(), pascal, 255, kCFStringEncodingMacRoman),
                  length <= 254);
        EXPECT_EQ(pascal[0], length <= 254 ? length : 0);
        char c[256];
        EXPECT_EQ(CFStringGetCString(string.get(), c, 256, kCFStringEncodingUTF8), length <= 255);
        EXPECT_EQ(std::string_view(c).size(), length <= 255 ? static_cast<std::size_t>(length) : 0);
    }
    const unsigned char bytes[] = "\3ab\x8E";
    const auto back =
        StringRef::Adopt(CFStringCreateWithPascalString(nullptr, bytes, kCFStringEncodingMacRoman));
    EXPECT_EQ(text(back), "ab\u00E9");
    EXPECT_EQ(CFStringCreateWithPascalString(nullptr, nullptr, kCFStringEncodingMacRoman), nullptr);
}

TEST_F(CFStringTest, ConstantsAreOneObjectForever) {
    const CFStringRef constant = CFSTR("constant");
    EXPECT_EQ(constant, CFSTR("constant"));
    CFRelease(constant);
    CFRelease(constant);
    EXPECT_EQ(text(constant), "constant");
    EXPECT_EQ(CFStringGetLength(CFSTR("\u00E9")), 1);
}

TEST_F(CFStringTest, Formats) {
    const UniChar units[] = {0x20AC, 0};
    const int five = 5;
    const auto number = CFRef<CFNumberRef>::Adopt(CFNumberCreate(nullptr, kCFNumberIntType, &five));
    const auto string = StringRef::Adopt(CFStringCreateWithFormat(
        nullptr, nullptr, CFSTR("%@:%@ %@ %d %5.2f %-4s| %.*s %08lX %lld%% %c %C %S %y"),
        CFSTR("n\u00E9"), number.get(), CFTypeRef{nullptr}, -7, 3.14159, "ab", 2, "wxyz", 0xBEEFul,
        1LL << 40, 'c', 0x263A, units));
    EXPECT_EQ(text(string),
              "n\u00E9:5 (null) -7  3.14 ab  | wx 0000BEEF 1099511627776% c \u263A \u20AC %y");
}

TEST_F(CFStringTest, MutableStringsAreIndependentCopies) {
    const StringRef original = makeString("middle");
    const auto changed =
        CFRef<CFMutableStringRef>::Adopt(CFStringCreateMutableCopy(nullptr, 2, original.get()));
    CFStringInsert(changed.get(), 0, CFSTR("<"));
    CFStringAppend(changed.get(), changed.get());
    CFStringReplace(changed.get(), CFRangeMake(1, 3), CFSTR("\u00E9"));
    CFStringDelete(changed.get(), CFRangeMake(7, 100));
    CFStringAppendCString(changed.get(), "\x8E", kCFStringEncodingMacRoman);
    EXPECT_EQ(text(changed.get()), "<\u00E9dle<m\u00E9");
    const StringRef frozen = StringRef::Adopt(CFStringCreateCopy(nullptr, changed.get()));
    CFStringReplaceAll(changed.get(), CFSTR(""));
    EXPECT_EQ(CFStringGetLength(frozen.get()), 8);
    EXPECT_EQ(text(original), "middle");
    CFStringAppend(const_cast<CFMutableStringRef>(original.get()), frozen.get());
    EXPECT_EQ(text(original), "middle") << "immutable strings stay so";
}

TEST_F(CFStringTest, ComparesAndFinds) {
    const std::tuple<const char*, const char*, CFStringCompareFlags, int> rows[] = {
        {"a", "b", 0, -1},
        {"a", "a\u00E9", 0, -1},
        {"B", "a", 0, -1},
        {"B", "a", kCFCompareCaseInsensitive, 1},
        {"\u00C9", "\u00E9", kCFCompareCaseInsensitive, 0},
        {"f10", "f9", 0, -1},
        {"f10", "f9", kCFCompareNumerically, 1},
        {"f007", "f7", kCFCompareNumerically, 0},
    };
    for (const auto& [one, other, options, order] : rows) {
        SCOPED_TRACE(std::string(one) + " and " + other);
        const StringRef first = makeString(one), second = makeString(other);
        EXPECT_EQ(CFStringCompare(first.get(), second.get(), options), order);
        EXPECT_EQ(CFStringCompare(second.get(), first.get(), options), -order);
    }
    const CFStringRef text = CFSTR("banana");
    EXPECT_EQ(CFStringFind(text, CFSTR("an"), 0).location, 1);
    EXPECT_EQ(
        CFStringFind(text, CFSTR("AN"), kCFCompareBackwards | kCFCompareCaseInsensitive).location,
        3);
    EXPECT_EQ(CFStringFind(text, CFSTR("an"), kCFCompareAnchored).location, kCFNotFound);
    EXPECT_EQ(CFStringFind(text, CFSTR(""), 0).location, kCFNotFound);
    EXPECT_TRUE(CFStringHasSuffix(text, CFSTR("na")));
    EXPECT_FALSE(CFStringHasPrefix(text, CFSTR("bananas")));
    EXPECT_EQ(CFStringGetIntValue(CFSTR("  -9999999999x")), INT32_MIN);
}

TEST_F(CFStringTest, SplitsAndJoins) {
    const StringRef string = makeString(",a,,b");
    const auto parts = CFRef<CFArrayRef>::Adopt(
        CFStringCreateArrayBySeparatingStrings(nullptr, string.get(), CFSTR(",")));
    EXPECT_EQ(CFArrayGetCount(parts.get()), 4);
    const auto joined =
        StringRef::Adopt(CFStringCreateByCombiningStrings(nullptr, parts.get(), CFSTR(",")));
    EXPECT_TRUE(CFEqual(joined.get(), string.get()));
}

TEST_F(CFStringTest, SystemEncodingIsChosenOnce) {
    EXPECT_EQ(CFStringGetSystemEncoding(), UInt32{kCFStringEncodingMacRoman});
    EXPECT_FALSE(OSASetSystemEncoding(kCFStringEncodingUTF16)) << "is not made of bytes";
    EXPECT_TRUE(OSASetSystemEncoding(kCFStringEncodingMacRoman));
    EXPECT_FALSE(OSASetSystemEncoding(kCFStringEncodingUTF8));
    EXPECT_EQ(CFStringGetSystemEncoding(), UInt32{kCFStringEncodingMacRoman});
}

TEST_F(CFStringTest, CountsAndConstantsAreSafeAmongThreads) {
    const StringRef shared = makeString("shared \u00E9");
    const CFStringRef constant = OSAConstantString("made by many");
    CFUUIDRef uuids[4] = {};
    std::thread threads[4];
    for (std::size_t i = 0; i < 4; ++i) {
        threads[i] = std::thread([&, i] {
            for (int n = 0; n < 5000; ++n) {
                const StringRef copy = shared;
                EXPECT_FALSE(CFEqual(copy.get(), makeString("own").get()));
                EXPECT_EQ(OSAConstantString("made by many"), constant);
                uuids[i] = CFUUIDGetConstantUUIDWithBytes(nullptr, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0, 1,
                                                          2, 3, 4, 5, 6);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(CFGetRetainCount(shared.get()), 1);
    for (const CFUUIDRef uuid : uuids) EXPECT_EQ(uuid, uuids[0]);
}

}  // namespace
