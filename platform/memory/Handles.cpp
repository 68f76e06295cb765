// Relocatable blocks: a record that begins with the master pointer, and the block apart from it.
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>

#include "platform/memory/MemoryError.h"

namespace osa {
namespace {

struct HandleRecord {
    char* block;  // the master pointer: a Handle is the address of this field
    Size size;
    Size capacity;  // of the block: what grows little by little is copied a few times only
    SInt8 state;
};
static_assert(offsetof(HandleRecord, block) == 0);

HandleRecord* recordOf(Handle handle) {
    if (handle == nullptr) {
        setMemoryError(nilHandleErr);
        return nullptr;
    }
    setMemoryError(noErr);
    return reinterpret_cast<HandleRecord*>(handle);
}

Handle newRecord() {
    auto* const record = static_cast<HandleRecord*>(allocateBlock(sizeof(HandleRecord)));
    if (record == nullptr) return nullptr;
    *record = {nullptr, 0, 0, 0};
    countBlock(1);
    return &record->block;
}

void setBlock(HandleRecord* record, char* block, Size size, Size capacity) {
    releaseBlock(record->block);
    record->block = block;
    record->size = size;
    record->capacity = capacity;
}

/// Whether the block serves for the size: room is given back when three quarters of it are unused.
bool isRoomKept(const HandleRecord& record, Size size) {
    constexpr Size kSmall = 256;
    return record.block != nullptr && size >= 0 && size <= record.capacity &&
           (record.capacity <= kSmall || size >= record.capacity / 4);
}

/// Half as much again as there was, if that is more than is needed.
Size grownCapacity(const HandleRecord& record, Size size) {
    const Size half = record.size / 2;
    if (record.size > std::numeric_limits<Size>::max() - half) return size;
    return std::max(size, record.size + half);
}

void changeState(Handle handle, int set, int clear) {
    if (HandleRecord* const record = recordOf(handle)) {
        record->state = static_cast<SInt8>((record->state & ~clear) | set);
    }
}

}  // namespace
}  // namespace osa

using osa::HandleRecord;
using osa::recordOf;

Handle NewEmptyHandle(void) {
    return osa::newRecord();
}

Handle NewHandle(Size size) {
    const Handle handle = osa::newRecord();
    if (handle == nullptr) return nullptr;
    ReallocateHandle(handle, size);
    if (MemError() == noErr) return handle;
    DisposeHandle(handle);
    osa::setMemoryError(memFullErr);
    return nullptr;
}

Handle NewHandleClear(Size size) {
    const Handle handle = NewHandle(size);
    if (handle != nullptr) std::memset(*handle, 0, static_cast<std::size_t>(size));
    return handle;
}

void ReallocateHandle(Handle handle, Size size) {
    HandleRecord* const record = recordOf(handle);
    if (record == nullptr) return;
    char* const block = static_cast<char*>(osa::allocateBlock(size));
    if (block != nullptr) osa::setBlock(record, block, size, size);
}

void EmptyHandle(Handle handle) {
    HandleRecord* const record = recordOf(handle);
    if (record == nullptr) return;
    osa::setBlock(record, nullptr, 0, 0);
}

void DisposeHandle(Handle handle) {
    HandleRecord* const record = recordOf(handle);
    if (record == nullptr) return;
    osa::releaseBlock(record->block);
    osa::releaseBlock(record);
    osa::countBlock(-1);
}

Size GetHandleSize(Handle handle) {
    const HandleRecord* const record = recordOf(handle);
    return record == nullptr ? 0 : record->size;
}

void SetHandleSize(Handle handle, Size size) {
    HandleRecord* const record = recordOf(handle);
    if (record == nullptr) return;
    if (osa::isRoomKept(*record, size)) {
        record->size = size;
        return;
    }
    const Size capacity = size > record->size ? osa::grownCapacity(*record, size) : size;
    char* const block = static_cast<char*>(osa::allocateBlock(capacity));
    if (block != nullptr) {
        const Size kept = std::min(record->size, size);
        if (kept > 0) std::memcpy(block, record->block, static_cast<std::size_t>(kept));
        osa::setBlock(record, block, size, capacity);
    } else if (size >= 0 && size <= record->capacity && record->block != nullptr) {
        // Room is only not given back.
        record->size = size;
        osa::setMemoryError(noErr);
    }
}

void HLock(Handle handle) {
    osa::changeState(handle, kHandleLockedMask, 0);
}

void HUnlock(Handle handle) {
    osa::changeState(handle, 0, kHandleLockedMask);
}

SInt8 HGetState(Handle handle) {
    const HandleRecord* const record = recordOf(handle);
    return record == nullptr ? 0 : record->state;
}

void HSetState(Handle handle, SInt8 state) {
    osa::changeState(handle, state, 0xFF);
}

void HSetRBit(Handle handle) {
    osa::changeState(handle, kHandleResourceMask, 0);
}

void HClrRBit(Handle handle) {
    osa::changeState(handle, 0, kHandleResourceMask);
}

OSErr PtrToHand(const void* source, Handle* newHandle, Size size) {
    if (newHandle == nullptr || (source == nullptr && size > 0)) {
        return osa::setMemoryError(paramErr);
    }
    *newHandle = NewHandle(size);
    if (*newHandle != nullptr) BlockMoveData(source, **newHandle, size);
    return MemError();
}

OSErr HandToHand(Handle* handle) {
    if (handle == nullptr || *handle == nullptr) return osa::setMemoryError(nilHandleErr);
    return PtrToHand(**handle, handle, GetHandleSize(*handle));
}

void BlockMoveData(const void* source, void* target, Size size) {
    if (size > 0) std::memmove(target, source, static_cast<std::size_t>(size));
    osa::setMemoryError(noErr);
}
