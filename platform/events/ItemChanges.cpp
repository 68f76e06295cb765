// Changing the blocks of lists, records and events in place.
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <cstring>
#include <functional>
#include <limits>

#include "platform/events/ItemBlock.h"

namespace osa {
namespace {

/// A copy of an item's data that lie in the block which is about to move.
class DataOutside {
  public:
    DataOutside(const NewItem* item, ByteSpan block) {
        if (item == nullptr || item->size == 0) return;
        const auto* const data = static_cast<const std::byte*>(item->data);
        data_ = data;
        const std::less<const std::byte*> before;
        if (before(data, block.data()) || !before(data, block.data() + block.size())) return;
        status_ = PtrToHand(data, &copy_, item->size);
        if (copy_ != nullptr) data_ = *copy_;
    }
    ~DataOutside() {
        if (copy_ != nullptr) DisposeHandle(copy_);
    }
    DataOutside(const DataOutside&) = delete;
    DataOutside& operator=(const DataOutside&) = delete;

    OSErr status() const { return status_; }
    const void* data() const { return data_; }

  private:
    const void* data_ = nullptr;
    Handle copy_ = nullptr;
    OSErr status_ = noErr;
};

/// A run of the block and the item that takes its place.
struct Splice {
    Section section;
    UInt32 offset;
    UInt32 oldLength;
    const NewItem* item;

    UInt32 newLength() const {
        if (item == nullptr) return 0;
        const auto size = static_cast<UInt32>(item->size);
        return static_cast<UInt32>(sizeof(ItemHeader) + paddedSize(size));
    }
};

/// Gives a descriptor of a container type that has no block yet an empty one.
OSErr makeBlock(AEDesc* container) {
    if (!dataOf(*container).empty()) return noErr;
    const BlockHeader empty = emptyBlock();
    if (container->dataHandle == nullptr) {
        return PtrToHand(&empty, &container->dataHandle, sizeof empty);
    }
    SetHandleSize(container->dataHandle, sizeof empty);
    if (MemError() != noErr) return memFullErr;
    std::memcpy(*container->dataHandle, &empty, sizeof empty);
    return noErr;
}

void writeItem(char* at, const NewItem& item, const void* data) {
    const ItemHeader header{item.keyword, item.type, static_cast<UInt32>(item.size), 0};
    std::memcpy(at, &header, sizeof header);
    at += sizeof header;
    copyShared(at, data, item.size);
    const auto size = static_cast<std::size_t>(item.size);
    std::memset(at + size, 0, paddedSize(size) - size);
}

void updateHeader(char* block, const Splice& splice, bool isAtEnd) {
    BlockHeader header;
    std::memcpy(&header, block, sizeof header);
    const UInt32 change = (splice.item != nullptr ? 1U : 0U) - (splice.oldLength > 0 ? 1U : 0U);
    if (splice.section == Section::items) {
        header.itemCount += change;
    } else {
        header.attributeCount += change;
        header.itemsOffset += splice.newLength() - splice.oldLength;
    }
    if (!isAtEnd) header.hints = {};
    std::memcpy(block, &header, sizeof header);
}

OSErr apply(AEDesc* container, const Splice& splice) {
    const Handle handle = container->dataHandle;
    const Size size = GetHandleSize(handle);
    const SInt64 newSize = SInt64{size} - SInt64{splice.oldLength} + SInt64{splice.newLength()};
    if (newSize > std::numeric_limits<Size>::max()) return memFullErr;
    const DataOutside outside(splice.item, dataOf(*container));
    if (outside.status() != noErr) return memFullErr;
    if (newSize > size) {
        SetHandleSize(handle, static_cast<Size>(newSize));
        if (MemError() != noErr) return memFullErr;
    }
    const std::size_t tail = static_cast<std::size_t>(size) - splice.offset - splice.oldLength;
    char* const at = *handle + splice.offset;
    if (tail > 0) std::memmove(at + splice.newLength(), at + splice.oldLength, tail);
    if (splice.item != nullptr) writeItem(at, *splice.item, outside.data());
    updateHeader(*handle, splice, tail == 0 && splice.oldLength == 0);
    if (newSize < size) SetHandleSize(handle, static_cast<Size>(newSize));
    return noErr;
}

}  // namespace

BlockHeader emptyBlock() {
    return {kBlockSignature, 0, 0, sizeof(BlockHeader), {}};
}

NewItem newItem(AEKeyword keyword, DescType type, const void* data, Size size) {
    if (type == typeNull) return {keyword, typeNull, nullptr, 0};
    return {keyword, type, data, size};
}

NewItem newItem(AEKeyword keyword, const AEDesc& desc) {
    const ByteSpan data = dataOf(desc);
    return newItem(keyword, desc.descriptorType, data.data(), static_cast<Size>(data.size()));
}

OSErr putItem(AEDesc* container, Section section, const ItemView* old, const NewItem& item) {
    if (item.size > std::numeric_limits<Size>::max() - Size{64}) return memFullErr;
    if (const OSErr status = makeBlock(container); status != noErr) return status;
    const Result<BlockView> block = BlockView::open(dataOf(*container));
    if (!block) return static_cast<OSErr>(block.status());
    const UInt32 offset = old != nullptr ? old->offset : block->end(section);
    return apply(container, {section, offset, old != nullptr ? old->length() : 0, &item});
}

OSErr removeItem(AEDesc* container, Section section, const ItemView& old) {
    return apply(container, {section, old.offset, old.length(), nullptr});
}

}  // namespace osa
