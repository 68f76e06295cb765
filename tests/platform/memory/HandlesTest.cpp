// Blocks: sizes, states, failure statuses and the live count.
#include <CoreServices/MacMemory.h>

#include "tests/support/Test.h"

TEST(Handles, KeepTheirAddressAndContentsThroughEveryChangeOfSize) {
    const CFIndex before = OSALiveBlockCount();
    const Handle empty = NewHandle(0);
    ASSERT_NE(empty, nullptr);
    EXPECT_NE(*empty, nullptr)
        << "text resources of no bytes are passed on by their master pointer";
    const Handle handle = NewHandleClear(4);
    std::memcpy(*handle, "abcd", 4);
    const Handle same = handle;
    SetHandleSize(handle, 100000);
    EXPECT_EQ(MemError(), noErr);
    SetHandleSize(handle, 3);
    EXPECT_EQ(handle, same);
    EXPECT_EQ(std::memcmp(*handle, "abc", 3), 0);
    EmptyHandle(handle);
    EXPECT_EQ(*handle, nullptr);
    EXPECT_EQ(GetHandleSize(handle), 0);
    ReallocateHandle(handle, 7);
    EXPECT_EQ(GetHandleSize(handle), 7);
    Handle copy = handle;
    EXPECT_EQ(HandToHand(&copy), noErr);
    EXPECT_NE(copy, handle);
    EXPECT_EQ(OSALiveBlockCount(), before + 3);
    for (const Handle each : {empty, handle, copy}) DisposeHandle(each);
    EXPECT_EQ(OSALiveBlockCount(), before);
}

TEST(Handles, RestoreTheirWholeStateByte) {
    const Handle handle = NewHandle(1);
    HSetRBit(handle);
    const SInt8 saved = HGetState(handle);
    HLock(handle);
    EXPECT_EQ(static_cast<UInt8>(HGetState(handle)), kHandleLockedMask | kHandleResourceMask);
    HSetState(handle, saved);
    EXPECT_EQ(static_cast<UInt8>(HGetState(handle)), kHandleResourceMask);
    DisposeHandle(handle);
}

TEST(Blocks, RefuseWhatCannotBeAndTellWhy) {
    const CFIndex before = OSALiveBlockCount();
    EXPECT_EQ(NewHandle(-1), nullptr);
    EXPECT_EQ(MemError(), memFullErr);
    EXPECT_EQ(NewPtr(0x7FFFFFFF), nullptr) << "size and header together exceed what a size can say";
    EXPECT_EQ(GetHandleSize(nullptr), 0);
    EXPECT_EQ(MemError(), nilHandleErr);
    OSAFailOperation(2, false);  // the record is made, its block is not
    EXPECT_EQ(NewHandle(8), nullptr);
    EXPECT_EQ(MemError(), memFullErr);
    OSAFailOperation(0, false);
    const Ptr pointer = NewPtrClear(5);
    EXPECT_EQ(GetPtrSize(pointer), 5);
    DisposePtr(pointer);
    EXPECT_EQ(OSALiveBlockCount(), before);
}
