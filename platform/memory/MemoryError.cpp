// MemError, allocation and the live count.
#include "platform/memory/MemoryError.h"

#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>
#include <OSA/Diagnostics.h>

#include <atomic>
#include <cstdlib>

#include "platform/base/FaultPoint.h"

namespace osa {
namespace {

thread_local OSErr memoryError = noErr;
std::atomic<CFIndex> liveBlocks{0};

}  // namespace

OSErr setMemoryError(OSErr status) {
    memoryError = status;
    return status;
}

void* allocateBlock(Size size) {
    if (size < 0 || faultPoint()) {
        setMemoryError(memFullErr);
        return nullptr;
    }
    // A block of no bytes still needs an address of its own.
    void* const block = std::malloc(size == 0 ? 1 : static_cast<std::size_t>(size));
    setMemoryError(block == nullptr ? memFullErr : noErr);
    return block;
}

void releaseBlock(void* block) {
    std::free(block);
}

void countBlock(int change) {
    liveBlocks.fetch_add(change, std::memory_order_relaxed);
}

}  // namespace osa

OSErr MemError(void) {
    return osa::memoryError;
}

CFIndex OSALiveBlockCount(void) {
    return osa::liveBlocks.load(std::memory_order_relaxed);
}
