// CFArray, CFDictionary and CFData.
#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDictionary.h>

#include <random>

#include "tests/platform/cf/CFTestSupport.h"

namespace {

class CFContainersTest : public CFTest {};

using DictionaryRef = CFRef<CFMutableDictionaryRef>;

DictionaryRef makeDictionary() {
    return DictionaryRef::Adopt(CFDictionaryCreateMutable(
        nullptr, 0, &kCFCopyStringDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
}

CFRef<CFMutableArrayRef> makeArray() {
    return CFRef<CFMutableArrayRef>::Adopt(
        CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
}

TEST_F(CFContainersTest, ArrayHoldsOneReferenceToEachValue) {
    const StringRef value = makeString("value");
    auto array = makeArray();
    CFArrayAppendValue(array.get(), value.get());
    CFArrayAppendArray(array.get(), array.get(), CFRangeMake(0, 1));
    EXPECT_EQ(CFGetRetainCount(value.get()), 3);
    CFArraySetValueAtIndex(array.get(), 0, value.get());
    CFArrayInsertValueAtIndex(array.get(), 0, CFSTR("first"));
    CFArrayRemoveValueAtIndex(array.get(), 1);
    EXPECT_EQ(CFGetRetainCount(value.get()), 2);
    EXPECT_EQ(description(array.get()), "(first, value)");
    EXPECT_EQ(
        CFArrayGetFirstIndexOfValue(array.get(), CFRangeMake(0, 2), makeString("value").get()), 1);
    EXPECT_EQ(CFArrayGetFirstIndexOfValue(array.get(), CFRangeMake(0, 1), value.get()),
              kCFNotFound);
    EXPECT_EQ(CFArrayGetValueAtIndex(array.get(), 2), nullptr);
    const auto copy = CFRef<CFArrayRef>::Adopt(CFArrayCreateCopy(nullptr, array.get()));
    CFArrayRemoveAllValues(array.get());
    EXPECT_EQ(CFArrayGetCount(copy.get()), 2);
    CFArrayRemoveAllValues(const_cast<CFMutableArrayRef>(copy.get()));
    EXPECT_EQ(CFArrayGetCount(copy.get()), 2) << "immutable arrays stay so";
    array.reset();
    EXPECT_EQ(CFGetRetainCount(value.get()), 2);
}

TEST_F(CFContainersTest, ArraySortsStably) {
    auto array = makeArray();
    for (const char* word : {"b2", "a1", "b1", "a2"})
        CFArrayAppendValue(array.get(), makeString(word).get());
    CFArraySortValues(
        array.get(), CFRangeMake(0, 4),
        [](const void* a, const void* b, void*) {
            const int difference = CFStringGetCharacterAtIndex(static_cast<CFStringRef>(a), 0) -
                                   CFStringGetCharacterAtIndex(static_cast<CFStringRef>(b), 0);
            return static_cast<CFComparisonResult>((difference > 0) - (difference < 0));
        },
        nullptr);
    EXPECT_EQ(description(array.get()), "(a1, a2, b2, b1)");
}

TEST_F(CFContainersTest, DictionaryKeepsKeysInTheOrderOfTheirArrival) {
    const DictionaryRef dictionary = makeDictionary();
    for (const char* key : {"z", "a", "m"}) {
        const StringRef name = makeString(key);
        CFDictionarySetValue(dictionary.get(), name.get(), CFSTR("old"));
    }
    CFDictionarySetValue(dictionary.get(), CFSTR("a"), CFSTR("new"));
    CFDictionaryAddValue(dictionary.get(), CFSTR("z"), CFSTR("not set"));
    CFDictionaryReplaceValue(dictionary.get(), CFSTR("q"), CFSTR("not set"));
    CFDictionarySetValue(dictionary.get(), CFSTR("null"), nullptr);
    EXPECT_EQ(description(dictionary.get()), "{z = old; a = new; m = old; }");
}

TEST_F(CFContainersTest, DictionaryCopiesStringKeys) {
    const DictionaryRef dictionary = makeDictionary();
    const auto key =
        CFRef<CFMutableStringRef>::Adopt(CFStringCreateMutableCopy(nullptr, 0, CFSTR("k")));
    CFDictionarySetValue(dictionary.get(), key.get(), kCFNull);
    CFStringAppend(key.get(), CFSTR("changed"));
    EXPECT_TRUE(CFDictionaryContainsKey(dictionary.get(), CFSTR("k")));
    EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), CFSTR("k")), kCFNull);
}

TEST_F(CFContainersTest, DictionaryAgreesWithAModelThroughManyChanges) {
    const DictionaryRef dictionary = makeDictionary();
    std::map<int, int> model;
    std::mt19937 random(7);
    std::vector<StringRef> names;
    for (int i = 0; i < 200; ++i) names.push_back(makeString(std::to_string(i)));
    for (int step = 0; step < 20000; ++step) {
        const std::size_t key = random() % names.size();
        const std::size_t value = random() % names.size();
        if (random() % 3 == 0) {
            model.erase(static_cast<int>(key));
            CFDictionaryRemoveValue(dictionary.get(), names[key].get());
        } else {
            model[static_cast<int>(key)] = static_cast<int>(value);
            CFDictionarySetValue(dictionary.get(), names[key].get(), names[value].get());
        }
    }
    ASSERT_EQ(CFDictionaryGetCount(dictionary.get()), static_cast<CFIndex>(model.size()));
    for (std::size_t key = 0; key < names.size(); ++key) {
        const auto expected = model.find(static_cast<int>(key));
        const void* const value = CFDictionaryGetValue(dictionary.get(), names[key].get());
        ASSERT_EQ(value, expected == model.end()
                             ? nullptr
                             : names[static_cast<std::size_t>(expected->second)].get());
    }
    const auto copy =
        CFRef<CFDictionaryRef>::Adopt(CFDictionaryCreateCopy(nullptr, dictionary.get()));
    EXPECT_TRUE(CFEqual(copy.get(), dictionary.get()));
    EXPECT_EQ(CFHash(copy.get()), CFHash(dictionary.get()));
    CFDictionaryRemoveAllValues(dictionary.get());
    EXPECT_FALSE(CFEqual(copy.get(), dictionary.get()));
}

TEST_F(CFContainersTest, ContainersWithoutCallbacksHoldBarePointers) {
    int numbers[2] = {1, 1};
    const auto dictionary = CFRef<CFMutableDictionaryRef>::Adopt(
        CFDictionaryCreateMutable(nullptr, 0, nullptr, nullptr));
    CFDictionarySetValue(dictionary.get(), &numbers[0], &numbers[1]);
    EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), &numbers[0]), &numbers[1]);
    EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), &numbers[1]), nullptr);
}

TEST_F(CFContainersTest, DataChangesInPlace) {
    const UInt8 bytes[] = {1, 2, 3, 4};
    const auto original = CFRef<CFDataRef>::Adopt(CFDataCreate(nullptr, bytes, 4));
    const auto data =
        CFRef<CFMutableDataRef>::Adopt(CFDataCreateMutableCopy(nullptr, 0, original.get()));
    EXPECT_TRUE(CFEqual(original.get(), data.get()));
    CFDataReplaceBytes(data.get(), CFRangeMake(1, 2), bytes, 4);
    CFDataSetLength(data.get(), 8);
    CFDataDeleteBytes(data.get(), CFRangeMake(0, 1));
    EXPECT_EQ(description(data.get()), "<01020304040000>");
    CFDataSetLength(data.get(), 0);
    EXPECT_NE(CFDataGetBytePtr(data.get()), nullptr) << "empty data has a pointer";
    EXPECT_EQ(CFDataCreate(nullptr, bytes, -1), nullptr);
}

}  // namespace
