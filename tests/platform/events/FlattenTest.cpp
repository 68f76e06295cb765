// Flattened descriptors: the bytes, round trips at any depth, and what is refused.
#include <CoreServices/AEHelpers.h>
#include <CoreServices/AEObjects.h>
#include <CoreServices/MacMemory.h>

#include "platform/base/ByteWriter.h"
#include "tests/platform/events/Desc.h"

namespace osa::test {
namespace {

std::string flattened(const Desc& desc, OSStatus expected = noErr) {
    std::string bytes(static_cast<std::size_t>(AESizeOfFlattenedDesc(desc)), '?');
    const auto size = static_cast<Size>(bytes.size());
    EXPECT_EQ(AEFlattenDesc(desc, bytes.data(), size, nullptr), expected);
    return bytes;
}

Desc sample() {
    Desc inner = Desc::list();
    AEPutDesc(inner, 0, Desc(typeIntlText, Desc::bytesOf(UInt32{1}) + "text"));
    AEPutDesc(inner, 0, Desc(typeSInt16, "odd"));
    AEPutDesc(inner, 0, Desc(typeAEList, ""));
    Desc key(typeUnicodeText, Desc::bytesOf(u'\u1234'));
    Desc event;
    AECreateAppleEvent('aevt', 'odoc', nullptr, 5, 0, event);
    Desc specifier;
    CreateObjSpecifier('cwin', inner, formName, key, false, specifier);
    AEPutParamDesc(event, keyDirectObject, specifier);
    AEPutAttributeDesc(event, 'any ', Desc('any ', "bytes"));
    return event;
}

TEST(Flatten, WritesTheBytesThatAreDocumented) {
    Desc list = Desc::list();
    AEPutDesc(list, 0, Desc(0x01020304));
    AEPutDesc(list, 0, Desc(typeUnicodeText, Desc::bytesOf(u'\u1234')));
    ByteWriter expected;
    expected.text("AEfd").u16(1).u16(2).text("list").u32(80);
    expected.text("AEit").u32(0).u32(2).u32(32).fill(16);
    expected.text("****long").u32(4).u32(0).u32(0x01020304).fill(4);
    expected.text("****utxt").u32(2).u32(0).u16(0x1234).fill(6);
    EXPECT_EQ(flattened(list), expected.takeText());
    EXPECT_EQ(flattened(Desc()), std::string("AEfd\0\1\0\0null\0\0\0\0", 16));
}

TEST(Flatten, ComesBackWholeAndRefusesEverythingElse) {
    const Desc event = sample();
    const std::string block = event.data(), bytes = flattened(event);
    Desc back;
    ASSERT_EQ(AEUnflattenDesc(bytes.data(), back), noErr);
    EXPECT_EQ(back.data(), block);
    AEDisposeDesc(back);
    ASSERT_EQ(AEUnflattenDescFromBytes((bytes + "behind").data(), bytes.size() + 6, back), noErr);
    AEDisposeDesc(back);
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        const std::string cut = bytes.substr(0, size);  // a copy: reads past its end are seen
        ASSERT_EQ(AEUnflattenDescFromBytes(cut.data(), size, back), errAECorruptData) << size;
    }
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        for (const int change : {0x01, 0x02, 0x08, 0x10, 0x80, 0xFF}) {
            std::string damaged = bytes;
            damaged[at] = static_cast<char>(damaged[at] ^ change);
            Desc other;
            if (AEUnflattenDescFromBytes(damaged.data(), damaged.size(), other) != noErr) continue;
            const std::string again = flattened(other);
            EXPECT_EQ(again, damaged.substr(0, again.size())) << at;
        }
    }
}

TEST(Flatten, AnswersWhatIsWrong) {
    char buffer[64];
    Size size = -1;
    EXPECT_EQ(AEFlattenDesc(Desc(1), buffer, 19, &size), errAEBufferTooSmall);
    EXPECT_EQ(size, 20);
    EXPECT_EQ(AEFlattenDesc(nullptr, buffer, 64, nullptr), paramErr);
    Desc list = Desc::list();
    AEPutPtr(list, 0, typeAEList, "damaged", 7);
    flattened(list, errAECorruptData);
}

TEST(Flatten, HasNoLimitOfDepth) {
    constexpr UInt32 kDepth = 1000000;
    ByteWriter writer;
    writer.text("AEfd").u16(1).u16(2).text("list").u32(48 * (kDepth - 1) + 32);
    for (UInt32 left = kDepth - 1;; --left) {
        writer.text("AEit").u32(0).u32(left > 0 ? 1 : 0).u32(32).fill(16);
        if (left == 0) break;
        writer.text("****list").u32(48 * (left - 1) + 32).u32(2);
    }
    Desc deep;
    ASSERT_EQ(AEUnflattenDescFromBytes(writer.view().data(), writer.size(), deep), noErr);
    EXPECT_TRUE(flattened(deep) == asText(writer.view()));
    Handle text = nullptr;
    ASSERT_EQ(AEPrintDescToHandle(deep, &text), noErr);
    EXPECT_TRUE(*text == std::string(kDepth, '[') + std::string(kDepth, ']'));
    DisposeHandle(text);
}

}  // namespace
}  // namespace osa::test
