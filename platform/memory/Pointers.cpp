// Fixed blocks, each behind a header that keeps its size.
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <cstddef>
#include <cstring>
#include <limits>

#include "platform/memory/MemoryError.h"

namespace {

struct alignas(std::max_align_t) PointerHeader {
    Size size;
};

PointerHeader* headerOf(Ptr pointer) {
    return reinterpret_cast<PointerHeader*>(pointer) - 1;
}

}  // namespace

Ptr NewPtr(Size size) {
    constexpr Size overhead = sizeof(PointerHeader);
    if (size < 0 || size > std::numeric_limits<Size>::max() - overhead) {
        osa::setMemoryError(memFullErr);
        return nullptr;
    }
    auto* const header = static_cast<PointerHeader*>(osa::allocateBlock(size + overhead));
    if (header == nullptr) return nullptr;
    header->size = size;
    osa::countBlock(1);
    return reinterpret_cast<Ptr>(header + 1);
}

Ptr NewPtrClear(Size size) {
    const Ptr pointer = NewPtr(size);
    if (pointer != nullptr) std::memset(pointer, 0, static_cast<std::size_t>(size));
    return pointer;
}

void DisposePtr(Ptr pointer) {
    osa::setMemoryError(pointer == nullptr ? nilHandleErr : noErr);
    if (pointer == nullptr) return;
    osa::releaseBlock(headerOf(pointer));
    osa::countBlock(-1);
}

Size GetPtrSize(Ptr pointer) {
    osa::setMemoryError(pointer == nullptr ? nilHandleErr : noErr);
    return pointer == nullptr ? 0 : headerOf(pointer)->size;
}
