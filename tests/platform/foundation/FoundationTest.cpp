// Pools, dictionaries, and texts and property lists in files.
#include <CoreFoundation/CFArray.h>
#include <Foundation/Foundation.h>

#include <type_traits>

#include "tests/support/TemporaryFolder.h"

namespace osa::test {
namespace {

std::string utf8(CFStringRef string) {
    if (string == nullptr) return "(null)";
    char buffer[1024] = {};
    CFStringGetCString(string, buffer, sizeof buffer, kCFStringEncodingUTF8);
    return buffer;
}

CFDataRef sampleData() {
    return NSData::dataWithBytes("abc", 3);
}

TEST(AutoreleasePool, ObjectsLiveAsLongAsTheInnermostPool) {
    const CFIndex before = OSALiveObjectCount();
    NSAutoreleasePool* const outer = NSAutoreleasePool::create();
    const CFDataRef first = sampleData();
    NSAutoreleasePool* const inner = NSAutoreleasePool::create();
    sampleData();
    EXPECT_EQ(OSALiveObjectCount(), before + 2);
    inner->drain();
    EXPECT_EQ(OSALiveObjectCount(), before + 1);
    EXPECT_EQ(CFDataGetLength(first), 3);

    NSAutoreleasePool::create();  // forgotten: goes with the outer one
    sampleData();
    std::thread([&] {
        sampleData();  // without a pool: goes with the thread
        NSAutoreleasePool* const own = NSAutoreleasePool::create();
        sampleData();
        own->release();
        EXPECT_EQ(OSALiveObjectCount(), before + 3);
    }).join();
    outer->release();
    EXPECT_EQ(OSALiveObjectCount(), before);
}

class Foundation : public testing::Test {
  protected:
    ~Foundation() override { pool_->release(); }

    CFStringRef text(const std::string& name) const {
        return NSString::stringWithContentsOfURL(urlOf(folder_.path(name)).get());
    }
    CFStringRef document(const std::string& name) const {
        return NSAttributedString::initWithURL(urlOf(folder_.path(name)).get(), nullptr).string();
    }

    const TemporaryFolder folder_;
    NSAutoreleasePool* const pool_ = NSAutoreleasePool::create();
};

TEST_F(Foundation, ReadsTextByItsMarkOrInTheSystemsEncoding) {
    const std::tuple<const char*, std::string, const char*> rows[] = {
        {"without a mark: Mac Roman", "caf\x8E\r", "café\r"},
        {"UTF-8 without a mark is not recognised", "caf\xC3\xA9", "caf√©"},
        {"UTF-8", "\xEF\xBB\277caf\xC3\xA9", "café"},
        {"UTF-16, big-endian", std::string("\xFE\xFF\0a\0\xE9", 6), "aé"},
        {"UTF-16, little-endian", std::string("\xFF\376a\0\xE9\0", 6), "aé"},
        {"damaged UTF-8", "\xEF\xBB\xBF\xC3", "(null)"},
        {"nothing", "", ""},
    };
    for (const auto& [row, content, wantedText] : rows) {
        SCOPED_TRACE(row);
        folder_.write("text", content);
        EXPECT_EQ(utf8(text("text")), wantedText);
        EXPECT_EQ(utf8(document("text")), wantedText) << "a document that is no rich text";
    }
    EXPECT_EQ(text("missing"), nullptr);
    EXPECT_EQ(NSString::stringWithContentsOfURL(nullptr), nullptr);
}

TEST_F(Foundation, HonoursTheSystemEncodingThatAHostSets) {
    folder_.write("text", "caf\xC3\xA9");
    const auto readInUTF8 = [&] {  // in a process of its own: the encoding is set once for all
        OSASetSystemEncoding(kCFStringEncodingUTF8);
        std::_Exit(utf8(text("text")) == "café" ? 0 : 1);
    };
    EXPECT_EXIT(readInUTF8(), testing::ExitedWithCode(0), "");
}

TEST_F(Foundation, ReadsDocumentsAndTheirFolders) {
    const std::string rtf = "{\\rtf1\\ansi a\\par{{\\NeXTGraphic x.png}\\'ac}}";
    folder_.write("a.rtf", rtf);
    folder_.write("b.rtfd/TXT.rtf", rtf);
    folder_.write("c.rtfd/x.png", "picture");
    EXPECT_EQ(utf8(document("a.rtf")), "a\n\uFFFC");
    EXPECT_EQ(utf8(document("b.rtfd")), "a\n\uFFFC");
    EXPECT_EQ(document("c.rtfd"), nullptr);
    EXPECT_TRUE(NSAttributedString::initWithURL(nullptr, nullptr).isNil());
}

TEST_F(Foundation, ReadsDictionariesOnly) {
    const auto read = [&](const char* content) {
        return NSDictionary::dictionaryWithContentsOfURL(
            urlOf(folder_.write("list", content)).get());
    };
    EXPECT_EQ(read("(a, b)"), nullptr);
    EXPECT_EQ(read("<plist><dict>"), nullptr);
    EXPECT_EQ(NSDictionary::dictionaryWithContentsOfURL(urlOf(folder_.path("none")).get()),
              nullptr);
    const CFDictionaryRef list = read("{ \"meta-data\" = { k = v; }; }");
    const CFTypeRef inner = NSDictionary::objectForKey(list, CFSTR("meta-data"));
    EXPECT_EQ(utf8(static_cast<CFStringRef>(NSDictionary::objectForKey(inner, CFSTR("k")))), "v");
    EXPECT_EQ(NSDictionary::objectForKey(list, CFSTR("other")), nullptr);
    EXPECT_EQ(NSDictionary::objectForKey(nullptr, CFSTR("k")), nullptr);
    EXPECT_THROW(NSDictionary::objectForKey(CFSTR("text"), CFSTR("k")), NSException);

    const auto target = CFRef<CFMutableDictionaryRef>::Adopt(CFDictionaryCreateMutable(
        nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    CFDictionarySetValue(target.get(), CFSTR("k"), CFSTR("old"));
    CFDictionarySetValue(target.get(), CFSTR("kept"), CFSTR("x"));
    NSDictionary::addEntriesFromDictionary(target.get(), inner);
    NSDictionary::addEntriesFromDictionary(target.get(), nullptr);
    EXPECT_EQ(utf8(static_cast<CFStringRef>(CFDictionaryGetValue(target.get(), CFSTR("k")))), "v");
    EXPECT_EQ(CFDictionaryGetCount(target.get()), 2);
    EXPECT_THROW(NSDictionary::addEntriesFromDictionary(target.get(), CFSTR("text")), NSException);
    static_assert(!std::is_convertible_v<NSException, OSStatus>);
}

}  // namespace
}  // namespace osa::test
