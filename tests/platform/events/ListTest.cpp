// Descriptors, lists and records: items put, replaced, deleted and given back, at any depth, and
// damaged blocks.
#include <CoreServices/AEObjects.h>

#include "tests/platform/events/Desc.h"

namespace osa::test {
namespace {

using Strings = std::vector<std::string>;

Strings itemsOf(const Desc& list) {
    Strings items;
    for (SInt32 i = 1; i <= list.count(); ++i) items.push_back(list.item(i).data());
    return items;
}

TEST(Descriptor, OwnsACopyOfItsDataAndRefusesWhatCannotBe) {
    const NoLeaks leaks;
    Desc desc(typeChar, "text");
    Desc copy;
    ASSERT_EQ(AEDuplicateDesc(desc, copy), noErr);
    EXPECT_NE(copy->dataHandle, desc->dataHandle);
    AEDisposeDesc(desc);
    EXPECT_EQ(desc->descriptorType, static_cast<DescType>(typeNull));
    EXPECT_EQ(copy.data(), "text");
    EXPECT_NE(Desc(typeChar, "")->dataHandle, nullptr) << "only null has no handle";
    EXPECT_EQ(Desc(typeNull, "ignored")->dataHandle, nullptr);
    char bytes[2] = {'-', '-'};
    EXPECT_EQ(AEGetDescData(copy, bytes, 1), noErr);
    EXPECT_EQ(std::string(bytes, 2), "t-");
    EXPECT_EQ(AEGetDescData(desc, bytes, 1), noErr);
    EXPECT_EQ(AEGetDescData(nullptr, bytes, 1), paramErr);
    EXPECT_EQ(AEGetDescDataSize(nullptr), 0);
    EXPECT_EQ(AEDisposeDesc(nullptr), paramErr);
    EXPECT_EQ(AECreateDesc(typeChar, nullptr, 1, desc), paramErr);
    EXPECT_EQ(AECreateDesc(typeChar, "x", -1, desc), paramErr);
    EXPECT_EQ(AECreateDesc(typeChar, "x", 1, nullptr), paramErr);
}

TEST(List, PutsReplacesAndDeletesItemsOfAnySize) {
    const NoLeaks leaks;
    Desc list = Desc::list();
    for (const char* const text : {"a", "", "twelve bytes", "d"}) {
        EXPECT_EQ(AEPutPtr(list, 0, typeChar, text, static_cast<Size>(strlen(text))), noErr);
    }
    EXPECT_EQ(AEPutDesc(list, 2, Desc(typeChar, "seventeen bytes..")), noErr);
    EXPECT_EQ(AEPutPtr(list, 3, typeChar, "c", 1), noErr);
    EXPECT_EQ(AEPutPtr(list, 5, typeNull, "no data", 7), noErr);
    EXPECT_EQ(itemsOf(list), (Strings{"a", "seventeen bytes..", "c", "d", ""}));
    EXPECT_EQ(list.item(5)->dataHandle, nullptr);
    EXPECT_EQ(AEDeleteItem(list, 1), noErr);
    EXPECT_EQ(AEDeleteItem(list, 3), noErr);
    EXPECT_EQ(itemsOf(list), (Strings{"seventeen bytes..", "c", ""}));
    char some[4] = "...";
    Size size = 0;
    AEKeyword keyword = 0;
    EXPECT_EQ(AEGetNthPtr(list, 1, typeChar, &keyword, nullptr, some, 2, &size), noErr);
    EXPECT_EQ(std::string(some), "se.");
    EXPECT_EQ(size, 17);
    EXPECT_EQ(keyword, static_cast<AEKeyword>(typeWildCard));
}

TEST(List, TakesItselfAndDataOfItsOwn) {
    Desc list = Desc::list();
    EXPECT_EQ(AEPutDesc(list, 0, list), noErr) << "while it is empty";
    EXPECT_EQ(AEPutPtr(list, 0, typeChar, "text", 4), noErr);
    const std::string block = list.data();
    EXPECT_EQ(AEPutDesc(list, 0, list), noErr);
    EXPECT_EQ(AEPutDesc(list, 1, list), noErr);
    EXPECT_EQ(list.item(3).data(), block);
    EXPECT_EQ(list.item(1).item(3).data(), block);
    EXPECT_EQ(AEPutPtr(list, 2, typeChar, *list->dataHandle, 24), noErr);
    EXPECT_EQ(list.item(2).data().size(), 24U);
    EXPECT_EQ(list.item(3).data(), block);
}

TEST(List, NestsAThousandDeepAndGrowsWithoutRecopying) {
    Desc list(17);
    for (int i = 0; i < 1000; ++i) {
        Desc outer = Desc::list();
        ASSERT_EQ(AEPutDesc(outer, 0, list), noErr);
        list = std::move(outer);
    }
    Desc copy;
    ASSERT_EQ(AEDuplicateDesc(list, copy), noErr);
    for (int i = 0; i < 1000; ++i) copy = copy.item(1);
    EXPECT_EQ(copy.data(), Desc::bytesOf(17));

    constexpr SInt32 kMany = 200000;
    Desc large = Desc::list();
    OSAFailOperation(100, false);  // far more allocations than growth by halves needs
    for (SInt32 i = 1; i <= kMany; ++i) {
        ASSERT_EQ(AEPutPtr(large, i % 2 * i, typeSInt32, &i, sizeof i), noErr);
    }
    EXPECT_EQ(OSAFailedOperations(), 0U);
    OSAFailOperation(0, false);
    const auto readHalf = [&](SInt32 from, bool& ok) {
        for (SInt32 i = from, value = 0; i < from + kMany / 2; ++i) {
            AEGetNthPtr(large, i, typeSInt32, nullptr, nullptr, &value, sizeof value, nullptr);
            ok = ok && value == i;
        }
    };
    bool ok[2] = {true, true};
    std::thread other(readHalf, kMany / 2 + 1, std::ref(ok[0]));
    readHalf(1, ok[1]);
    Desc whole;
    EXPECT_EQ(AEDuplicateDesc(large, whole), noErr);
    other.join();
    EXPECT_TRUE(ok[0] && ok[1]);
    EXPECT_EQ(whole.count(), kMany);
}

TEST(Record, KeepsOneFieldAKeywordAndItsShapeUnderOtherTypes) {
    Desc key(typeUnicodeText, Desc::bytesOf(u'n'));
    Desc specifier;
    EXPECT_EQ(CreateObjSpecifier('cwin', nullptr, formName, key, true, specifier), noErr);
    EXPECT_EQ(key->dataHandle, nullptr);
    EXPECT_TRUE(AECheckIsRecord(specifier));
    FourCharCode code = 0;
    EXPECT_EQ(AEGetKeyPtr(specifier, keyAEDesiredClass, typeType, nullptr, &code, 4, nullptr),
              noErr);
    EXPECT_EQ(code, static_cast<FourCharCode>('cwin'));
    EXPECT_EQ(AEPutKeyPtr(specifier, keyAEKeyData, typeChar, "other", 5), noErr);
    EXPECT_EQ(specifier.count(), 4);
    EXPECT_EQ(AEPutKeyDesc(specifier, keyAEContainer, specifier), noErr);
    EXPECT_EQ(specifier.item(4).item(3).data(), "other");
    AEKeyword keyword = 0;
    EXPECT_EQ(AEGetNthPtr(specifier, 3, '****', &keyword, nullptr, nullptr, 0, nullptr), noErr);
    EXPECT_EQ(keyword, static_cast<AEKeyword>(keyAEKeyData));
    EXPECT_EQ(AEDeleteKeyDesc(specifier, keyAEDesiredClass), noErr);
    EXPECT_EQ(specifier.count(), 3);
    EXPECT_EQ(CreateObjSpecifier('cwin', specifier, formName, nullptr, true, key), paramErr);
    EXPECT_EQ(specifier->dataHandle, nullptr) << "disposed of on failure, too";
}

TEST(Containers, AnswerWhatIsWrong) {
    Desc list = Desc::list(), record = Desc::list(true), number(1);
    EXPECT_EQ(AEPutKeyPtr(record, 'null', typeNull, nullptr, 0), noErr);
    SInt32 count;
    Desc out;
    char byte;
    const std::tuple<const char*, OSErr, OSErr> cases[] = {
        {"count of a number", AECountItems(number, &count), errAEWrongDataType},
        {"index in a record put", AEPutDesc(record, 0, number), errAEWrongDataType},
        {"keyword in a list put", AEPutKeyDesc(list, 'key ', number), errAEWrongDataType},
        {"keyword in a list", AESizeOfParam(list, 'key ', nullptr, nullptr), errAEWrongDataType},
        {"index past the end", AEPutDesc(list, 2, number), errAEIllegalIndex},
        {"index below 0", AEPutDesc(list, -1, number), errAEIllegalIndex},
        {"no such field", AEGetKeyDesc(record, 'none', typeWildCard, out), errAEDescNotFound},
        {"no way to coerce", AEGetKeyDesc(record, 'null', typeFSRef, out), errAECoercionFail},
        {"no buffer", AEGetNthPtr(record, 1, '****', 0, 0, nullptr, 1, 0), paramErr},
        {"negative size", AEGetNthPtr(record, 1, '****', 0, 0, &byte, -1, 0), paramErr},
        {"attribute of a record", AESizeOfAttribute(record, 'a   ', 0, 0), errAENotAppleEvent},
    };
    for (const auto& [what, status, expected] : cases) EXPECT_EQ(status, expected) << what;
    OSAFailOperation(1, true);
    EXPECT_EQ(AEPutDesc(list, 0, record), memFullErr);
    EXPECT_EQ(AECreateList(nullptr, 0, false, out), memFullErr);
    OSAFailOperation(0, false);
    EXPECT_EQ(list.count(), 0);
    EXPECT_FALSE(AECheckIsRecord(list) || AECheckIsRecord(number) || AECheckIsRecord(nullptr));
    Desc empty(typeAEList, "");
    EXPECT_EQ(empty.count(), 0);
    EXPECT_EQ(AEPutDesc(empty, 0, number), noErr);
    EXPECT_EQ(empty.item(1).data(), number.data());
}

TEST(Containers, SurviveAnyWordOverwritten) {
    Desc record = Desc::list(true);
    for (const AEKeyword key : {'one ', 'two ', 'tree'}) {
        AEPutKeyDesc(record, key, Desc(typeChar, "some text"));
    }
    const std::string sound = record.data();
    for (std::size_t at = 0; at < sound.size(); at += 4) {
        for (const UInt32 word : {0U, 1U, 8U, 32U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFF0U, ~0U}) {
            std::string damaged = sound;
            std::memcpy(damaged.data() + at, &word, 4);
            for (const DescType type : {typeAEList, typeAERecord, typeAppleEvent, typeSInt64}) {
                Desc desc(type, damaged);
                char buffer[8];
                SInt32 count = 0;
                AECountItems(desc, &count);
                for (SInt32 i = 4; i >= 0; --i) {
                    AEGetNthPtr(desc, i, typeWildCard, nullptr, nullptr, buffer, 8, nullptr);
                }
                AESizeOfAttribute(desc, keyMissedKeywordAttr, nullptr, nullptr);
                AESizeOfParam(desc, 'tree', nullptr, nullptr);
                AEPutPtr(desc, 2, typeChar, "longer than it was", 18);
                AEPutKeyPtr(desc, 'two ', typeChar, "longer than it was", 18);
                AEPutAttributePtr(desc, 'two ', typeChar, "longer than it was", 18);
                AEDeleteItem(desc, 3);
            }
        }
    }
    Desc cut(typeAERecord, sound.substr(0, sound.size() - 8));
    EXPECT_EQ(AESizeOfNthItem(cut, 2, nullptr, nullptr), noErr);
    EXPECT_EQ(AESizeOfNthItem(cut, 3, nullptr, nullptr), errAECorruptData);
}

}  // namespace
}  // namespace osa::test
