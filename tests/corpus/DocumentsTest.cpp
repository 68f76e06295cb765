// Archives, property lists and rich text of the corpus through the functions that read them.
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFPropertyList.h>
#include <Foundation/Foundation.h>

#include "tests/corpus/Corpus.h"

namespace osa::test {
namespace {

using Documents = Corpus;

std::shared_ptr<NSAutoreleasePool> makePool() {
    return {NSAutoreleasePool::create(), [](NSAutoreleasePool* pool) { pool->release(); }};
}

TEST_F(Documents, ArchivesAreReadOrRefusedWithAReason) {
    std::map<std::string, int> outcomes;
    const Resources before;
    for (const fs::path& file : files("typedstream")) {
        SCOPED_TRACE(file);
        const auto pool = makePool();
        const bool isIndex = file.extension() == ".helpindex";
        try {
            const CFTypeRef root =
                NSUnarchiver::unarchiveObjectWithData(dataOf(contentOf(file)).get());
            ++outcomes[root == nullptr ? "of classes that lists do not have" : "read"];
            EXPECT_TRUE(!isIndex || (root && CFGetTypeID(root) == CFDictionaryGetTypeID()));
        } catch (const NSException& refused) {
            EXPECT_FALSE(isIndex);
            ++outcomes[refused.reason()];
        }
    }
    // Indexes and dictionaries; interfaces; colours, which begin with a number.
    const std::map<std::string, int> expected = {
        {"read", 14}, {"of classes that lists do not have", 18}, {"no root object at byte 19", 1}};
    EXPECT_EQ(outcomes, expected);
    EXPECT_EQ(Resources(), before);
}

bool isList(const fs::path& file) {
    return file.extension() == ".plist" || file.extension() == ".strings" ||
           file.filename() == "CodeResources" || file.string().find("/plist/") != std::string::npos;
}

/// Files that made other readers crash or leak, and lists in forms that are not ours.
bool maySpoil(const fs::path& file) {
    const std::string name = file.filename();
    return name.starts_with("fuzz__") || file.extension() == ".json" ||
           name == "test__data__j1.plist";
}

CFRef<CFTypeRef> listOf(const CFRef<CFDataRef>& data) {
    return CFRef<CFTypeRef>::Adopt(CFPropertyListCreateWithData(
        nullptr, data.get(), kCFPropertyListImmutable, nullptr, nullptr));
}

TEST_F(Documents, PropertyListsAreReadAndSurviveWriting) {
    int good = 0, spoiltRead = 0;
    const Resources before;
    for (const fs::path& file : files("")) {
        if (!isList(file)) continue;
        SCOPED_TRACE(file);
        const CFRef<CFTypeRef> list = listOf(dataOf(contentOf(file)));
        if (maySpoil(file)) {
            spoiltRead += list ? 1 : 0;
            continue;
        }
        ++good;
        ASSERT_TRUE(list);
        for (const auto form : {kCFPropertyListXMLFormat_v1_0, kCFPropertyListBinaryFormat_v1_0}) {
            const auto again = listOf(CFRef<CFDataRef>::Adopt(
                CFPropertyListCreateData(nullptr, list.get(), form, 0, nullptr)));
            ASSERT_TRUE(again) << form;
            EXPECT_TRUE(CFEqual(again.get(), list.get())) << form;
        }
    }
    EXPECT_EQ(good, 80);
    EXPECT_EQ(spoiltRead, 3);
    EXPECT_EQ(Resources(), before);
}

/// \u, Windows Latin-2, Cyrillic fonts, GBK, tables in tables, Shift-JIS, Mac Roman, the PC's set.
const KnownText kTexts[] = {
    {"joshy+striprtf/tests__rtf__TX_RTF32_18.0.541.501.rtf", 169, 0x7F081AE5FEEB8318},
    {"joshy+striprtf/tests__rtf__ansicpg1250.rtf", 415, 0x9E5713C73E4F0A6E},
    {"joshy+striprtf/tests__rtf__bytes.rtf", 3705, 0x2172B9EC4007735D},
    {"joshy+striprtf/tests__rtf__issue_28.rtf", 67, 0x9D86FC1864B7E344},
    {"joshy+striprtf/tests__rtf__nested_table.rtf", 494, 0xEFA73D68D1077B7A},
    {"tkurita+ModuleLoader/History.rtf", 6641, 0x254968D0CD335607},
    {"curtclifton+OmniFocusScripts/Deprecated__OmniFocus-Mail Links__Instructions.rtf", 8043,
     0xE6381FE35699A1EC},
    {"nsbasic-archive+NS-Basic-for-Newton-OS/misc__Misc Development__Package "
     "Hacking__bytecode-d0.rtf",
     26094, 0xA60658D3ECE7C440},
};

CFStringRef textOf(const fs::path& file) {
    return NSAttributedString::initWithURL(urlOf(file).get(), nullptr).string();
}

TEST_F(Documents, RichTextGivesTheCharactersThatWereWritten) {
    const auto pool = makePool();
    for (const fs::path& file : files("rtf")) EXPECT_NE(textOf(file), nullptr) << file;
    for (const KnownText& known : kTexts) {
        SCOPED_TRACE(known.path);
        expectText(textOf(root_ / "rtf" / known.path), known);
    }
}

}  // namespace
}  // namespace osa::test
