// Descriptors: ownership and what every call answers to null, empty and impossible arguments.
#include <CoreServices/AEDataModel.h>
#include <CoreServices/MacErrors.h>
#include <OSA/Diagnostics.h>
#include <gtest/gtest.h>

#include <string>

namespace osa::test {
namespace {

std::string dataOf(const AEDesc& desc) {
    std::string data(static_cast<std::size_t>(AEGetDescDataSize(&desc)), '\0');
    EXPECT_EQ(AEGetDescData(&desc, data.data(), static_cast<Size>(data.size())), noErr);
    return data;
}

TEST(Descriptor, OwnsACopyOfItsDataAndGivesItBack) {
    const CFIndex before = OSALiveBlockCount();
    AEDesc desc;
    ASSERT_EQ(AECreateDesc(typeChar, "text", 4, &desc), noErr);
    AEDesc copy;
    ASSERT_EQ(AEDuplicateDesc(&desc, &copy), noErr);
    EXPECT_NE(copy.dataHandle, desc.dataHandle);
    AEDisposeDesc(&desc);
    EXPECT_EQ(desc.descriptorType, static_cast<DescType>(typeNull));
    EXPECT_EQ(dataOf(copy), "text");
    AEDesc empty;
    ASSERT_EQ(AECreateDesc(typeChar, nullptr, 0, &empty), noErr);
    EXPECT_NE(empty.dataHandle, nullptr) << "only the null descriptor has no handle";
    char one[2] = {'-', '-'};
    EXPECT_EQ(AEGetDescData(&copy, one, 1), noErr);
    EXPECT_EQ(std::string(one, 2), "t-");
    AEDisposeDesc(&copy);
    AEDisposeDesc(&empty);
    EXPECT_EQ(OSALiveBlockCount(), before);
}

TEST(Descriptor, RefusesWhatCannotBe) {
    AEDesc desc;
    EXPECT_EQ(AECreateDesc(typeChar, nullptr, 1, &desc), paramErr);
    EXPECT_EQ(AECreateDesc(typeChar, "x", -1, &desc), paramErr);
    EXPECT_EQ(AECreateDesc(typeChar, "x", 1, nullptr), paramErr);
    ASSERT_EQ(AECreateDesc(typeNull, "ignored", 7, &desc), noErr);
    EXPECT_EQ(desc.dataHandle, nullptr);
    char byte;
    EXPECT_EQ(AEGetDescData(&desc, &byte, 1), noErr);
    EXPECT_EQ(AEGetDescData(nullptr, &byte, 1), paramErr);
    EXPECT_EQ(AEGetDescDataSize(nullptr), 0);
    EXPECT_EQ(AEDisposeDesc(nullptr), paramErr);
}

}  // namespace
}  // namespace osa::test
