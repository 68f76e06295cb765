// Descriptors: ownership and what every call answers to null, empty and impossible arguments.
#include <CoreServices/AEDataModel.h>
#include <CoreServices/Files.h>
#include <CoreServices/MacErrors.h>
#include <OSA/Diagnostics.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/support/TemporaryFolder.h"

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

TEST(Coercion, GoesBetweenReferencesAndURLsOfWhatIsThere) {
    const TemporaryFolder folder;
    const std::string path = folder.write("50% caf\xC3\xA9 #1", "");
    FSRef ref;
    ASSERT_EQ(FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), &ref, nullptr), noErr);
    AEDesc reference;
    AEDesc url;
    AEDesc back;
    ASSERT_EQ(AECreateDesc(typeFSRef, &ref, sizeof ref, &reference), noErr);
    ASSERT_EQ(AECoerceDesc(&reference, typeFileURL, &url), noErr);
    EXPECT_TRUE(dataOf(url).ends_with("/50%25%20caf%C3%A9%20%231")) << dataOf(url);
    ASSERT_EQ(AECoerceDesc(&url, typeFSRef, &back), noErr);
    FSRef same;
    AEGetDescData(&back, &same, sizeof same);
    EXPECT_EQ(FSCompareFSRefs(&ref, &same), noErr);
    AEDisposeDesc(&back);
    std::filesystem::remove(path);
    EXPECT_EQ(AECoerceDesc(&url, typeFSRef, &back), fnfErr);
    EXPECT_EQ(back.descriptorType, static_cast<DescType>(typeNull));
    EXPECT_EQ(AECoerceDesc(&reference, typeFileURL, &back), fnfErr);
    EXPECT_EQ(AECoerceDesc(&url, typeSInt32, &back), errAECoercionFail);
    AEDesc broken;
    ASSERT_EQ(AECreateDesc(typeFSRef, "short", 5, &broken), noErr);
    EXPECT_EQ(AECoerceDesc(&broken, typeFileURL, &back), errAECoercionFail);
    for (AEDesc* const each : {&reference, &url, &broken}) AEDisposeDesc(each);
}

}  // namespace
}  // namespace osa::test
