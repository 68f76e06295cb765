// Events: attributes apart from parameters, return IDs, and which parameters were missed.
#include "tests/platform/events/Desc.h"

namespace osa::test {
namespace {

Desc makeEvent(AEReturnID returnID = kAutoGenerateReturnID, const AEDesc* target = nullptr) {
    Desc event;
    EXPECT_EQ(AECreateAppleEvent('aevt', 'odoc', target, returnID, 7, event), noErr);
    return event;
}

SInt32 attribute(const Desc& event, AEKeyword keyword, DescType type = typeSInt32) {
    SInt32 value = 0;
    EXPECT_EQ(AEGetAttributePtr(event, keyword, type, nullptr, &value, 4, nullptr), noErr);
    return value;
}

/// 0 when none was missed.
AEKeyword missed(const Desc& event) {
    AEKeyword keyword = 0;
    const OSErr status = AEGetAttributePtr(event, keyMissedKeywordAttr, typeKeyword, nullptr,
                                           &keyword, sizeof keyword, nullptr);
    EXPECT_EQ(status, keyword == 0 ? errAEDescNotFound : noErr);
    EXPECT_EQ(AESizeOfAttribute(event, keyMissedKeywordAttr, nullptr, nullptr), status);
    return keyword;
}

TEST(Event, KeepsAttributesApartFromParameters) {
    const Desc target(typeApplicationBundleID, "org.example");
    Desc event = makeEvent(12, target);
    EXPECT_EQ(attribute(event, keyEventClassAttr, typeType), 'aevt');
    EXPECT_EQ(attribute(event, keyEventIDAttr, typeType), 'odoc');
    EXPECT_EQ(attribute(event, keyReturnIDAttr), 12);
    EXPECT_EQ(attribute(event, keyTransactionIDAttr), 7);
    Desc address;
    EXPECT_EQ(AEGetAttributeDesc(event, keyAddressAttr, typeWildCard, address), noErr);
    EXPECT_EQ(address.data(), "org.example");
    EXPECT_TRUE(AECheckIsRecord(event));
    const SInt32 numbers[] = {1, 2};
    EXPECT_EQ(AEPutParamPtr(event, keyAddressAttr, typeSInt32, &numbers[0], 4), noErr);
    EXPECT_EQ(AEPutAttributeDesc(event, keyAddressAttr, Desc(typeChar, "longer than before")),
              noErr);
    EXPECT_EQ(AEPutAttributePtr(event, keyDirectObject, typeSInt32, &numbers[1], 4), noErr);
    EXPECT_EQ(AEPutParamPtr(event, 'last', typeChar, "x", 1), noErr);
    SInt32 value = 0;
    EXPECT_EQ(AEGetParamPtr(event, keyAddressAttr, typeSInt32, nullptr, &value, 4, nullptr), noErr);
    EXPECT_EQ(value, 1);
    EXPECT_EQ(attribute(event, keyDirectObject), 2);
    EXPECT_EQ(AESizeOfParam(event, keyDirectObject, nullptr, nullptr), errAEDescNotFound);
    EXPECT_EQ(event.item(2).data(), "x");
}

TEST(Event, MakesReturnIDsThatStayAboveZero) {
    const SInt32 first = attribute(makeEvent(), keyReturnIDAttr);
    for (SInt32 i = 1; i <= 32768; ++i) {
        ASSERT_EQ(attribute(makeEvent(), keyReturnIDAttr), (first - 1 + i) % 32767 + 1);
    }
}

TEST(Event, AnswersTheParameterThatWasMissed) {
    Desc event = makeEvent();
    EXPECT_EQ(missed(event), 0U);
    for (const AEKeyword key : {'one ', 'two ', 'tree'}) AEPutParamDesc(event, key, Desc(1));
    EXPECT_EQ(AEPutAttributePtr(event, keyMissedKeywordAttr, typeKeyword, "drop", 4), noErr);
    EXPECT_EQ(AESizeOfParam(event, 'one ', nullptr, nullptr), noErr);
    EXPECT_EQ(missed(event), static_cast<AEKeyword>('one ')) << "a size is no value";
    Desc out;
    EXPECT_EQ(AEGetParamDesc(event, 'one ', typeSInt32, out), noErr);
    EXPECT_EQ(missed(event), static_cast<AEKeyword>('two '));
    Desc optional = Desc::list();
    const AEKeyword two = 'two ';
    EXPECT_EQ(AEPutPtr(optional, 0, typeChar, "tree", 4), noErr);  // no keyword
    EXPECT_EQ(AEPutPtr(optional, 0, typeKeyword, &two, sizeof two), noErr);
    EXPECT_EQ(AEPutAttributeDesc(event, keyOptionalKeywordAttr, optional), noErr);
    EXPECT_EQ(missed(event), static_cast<AEKeyword>('tree'));
    EXPECT_EQ(AEGetNthPtr(event, 3, typeWildCard, nullptr, nullptr, nullptr, 0, nullptr), noErr);
    EXPECT_EQ(missed(event), 0U);
    EXPECT_EQ(AEPutParamDesc(event, 'one ', Desc(2)), noErr);
    EXPECT_EQ(missed(event), static_cast<AEKeyword>('one ')) << "a new value was not read yet";
}

}  // namespace
}  // namespace osa::test
