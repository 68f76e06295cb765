// Reading the blocks of lists, records and events, and what counts as one.
#include "platform/events/ItemBlock.h"

#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <atomic>
#include <cstddef>
#include <cstring>

#include "platform/events/TypeTable.h"

namespace osa {
namespace {

template <typename T>
T load(ByteSpan bytes, std::size_t offset) {
    T value;
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

/// A field of the block that is written while the block is only read. Blocks of handles are aligned
/// for anything.
template <typename T>
std::atomic_ref<T> sharedField(ByteSpan block, std::size_t offset) {
    auto* const bytes = const_cast<std::byte*>(block.data()) + offset;
    return std::atomic_ref<T>(*reinterpret_cast<T*>(bytes));
}

std::atomic_ref<UInt32> flagsOf(ByteSpan block, const ItemView& item) {
    return sharedField<UInt32>(block, item.offset + offsetof(ItemHeader, flags));
}

bool isHeaderPossible(const BlockHeader& header, std::size_t size) {
    if (header.signature != kBlockSignature || header.itemsOffset % 8 != 0) return false;
    if (header.itemsOffset < sizeof header || header.itemsOffset > size) return false;
    return header.attributeCount <= (header.itemsOffset - sizeof header) / sizeof(ItemHeader) &&
           header.itemCount <= (size - header.itemsOffset) / sizeof(ItemHeader);
}

}  // namespace

Result<BlockView> BlockView::open(ByteSpan bytes) {
    BlockView view;
    if (bytes.empty()) return view;
    if (bytes.size() < sizeof(BlockHeader)) return Failure(errAECorruptData);
    // The hint is left out: it may be changing.
    std::memcpy(&view.header_, bytes.data(), offsetof(BlockHeader, hint));
    if (!isHeaderPossible(view.header_, bytes.size())) return Failure(errAECorruptData);
    view.bytes_ = bytes;
    return view;
}

UInt32 BlockView::count(Section section) const {
    return section == Section::items ? header_.itemCount : header_.attributeCount;
}

UInt32 BlockView::begin(Section section) const {
    if (bytes_.empty()) return 0;
    return section == Section::items ? header_.itemsOffset : sizeof(BlockHeader);
}

UInt32 BlockView::end(Section section) const {
    return section == Section::items ? static_cast<UInt32>(bytes_.size()) : header_.itemsOffset;
}

Result<ItemView> BlockView::at(Section section, UInt32 offset) const {
    const UInt32 limit = end(section);
    if (offset % 8 != 0 || offset < begin(section) || offset > limit ||
        limit - offset < sizeof(ItemHeader)) {
        return Failure(errAECorruptData);
    }
    // Key, type and size; the flags may be changing.
    const auto keyword = load<AEKeyword>(bytes_, offset);
    const auto type = load<DescType>(bytes_, offset + offsetof(ItemHeader, type));
    const auto size = load<UInt32>(bytes_, offset + offsetof(ItemHeader, size));
    if (paddedSize(size) > limit - offset - sizeof(ItemHeader)) return Failure(errAECorruptData);
    return ItemView{keyword, type, offset, bytes_.subspan(offset + sizeof(ItemHeader), size)};
}

Result<ItemView> BlockView::find(Section section, AEKeyword keyword) const {
    Result<ItemView> found = Failure(errAEDescNotFound);
    const OSStatus status = forEach(section, [&](const ItemView& item) {
        if (item.keyword != keyword) return true;
        found = item;
        return false;
    });
    if (status != noErr) return Failure(status);
    return found;
}

Result<ItemView> BlockView::item(SInt32 index) const {
    if (index < 1 || static_cast<UInt32>(index) > count(Section::items)) {
        return Failure(errAEIllegalIndex);
    }
    const auto hint = sharedField<UInt64>(bytes_, offsetof(BlockHeader, hint));
    const UInt64 last = hint.load(std::memory_order_relaxed);
    const auto wanted = static_cast<UInt32>(index);
    auto reached = static_cast<UInt32>(last >> 32);
    auto offset = static_cast<UInt32>(last);
    if (reached < 1 || reached > wanted) {
        reached = 1;
        offset = begin(Section::items);
    }
    for (;; ++reached) {
        Result<ItemView> found = at(Section::items, offset);
        if (!found) return found;
        if (reached == wanted) {
            hint.store(UInt64{wanted} << 32 | offset, std::memory_order_relaxed);
            return found;
        }
        offset += found->length();
    }
}

bool BlockView::wasRead(const ItemView& item) const {
    return (flagsOf(bytes_, item).load(std::memory_order_relaxed) & kItemWasRead) != 0;
}

void BlockView::markRead(const ItemView& item) const {
    if (!wasRead(item)) flagsOf(bytes_, item).fetch_or(kItemWasRead, std::memory_order_relaxed);
}

ByteSpan dataOf(const AEDesc& desc) {
    if (desc.dataHandle == nullptr) return {};
    return {reinterpret_cast<const std::byte*>(*desc.dataHandle),
            static_cast<std::size_t>(GetHandleSize(desc.dataHandle))};
}

Shape shapeOf(DescType type, ByteSpan data) {
    if (type == typeAEList) return Shape::list;
    if (type == typeAppleEvent) return Shape::event;
    if (type == typeAERecord) return Shape::record;
    // Text that begins like a block is text all the same.
    if (data.empty() || plainTypeOf(type) != nullptr) return Shape::none;
    return BlockView::open(data).ok() ? Shape::record : Shape::none;
}

Result<Container> openContainer(const AEDesc* desc) {
    if (desc == nullptr) return Failure(paramErr);
    const ByteSpan data = dataOf(*desc);
    const Shape shape = shapeOf(desc->descriptorType, data);
    if (shape == Shape::none) return Failure(errAEWrongDataType);
    OSA_TRY(const BlockView block, BlockView::open(data));
    return Container{shape, block};
}

Result<BlockView> openEvent(const AEDesc* desc) {
    if (desc == nullptr) return Failure(paramErr);
    if (desc->descriptorType != typeAppleEvent) return Failure(errAENotAppleEvent);
    return BlockView::open(dataOf(*desc));
}

void copyShared(void* target, const void* source, Size size) {
    const auto length = static_cast<std::size_t>(size);
    const ByteSpan bytes(static_cast<const std::byte*>(source), length);
    const bool isAligned = reinterpret_cast<std::uintptr_t>(source) % alignof(UInt64) == 0;
    if (length < sizeof(BlockHeader) || !isAligned || load<UInt32>(bytes, 0) != kBlockSignature) {
        if (length > 0) std::memcpy(target, source, length);
        return;
    }
    auto* out = static_cast<std::byte*>(target);
    std::size_t offset = 0;
    for (; length - offset >= sizeof(UInt64); offset += sizeof(UInt64)) {
        const UInt64 word = sharedField<UInt64>(bytes, offset).load(std::memory_order_relaxed);
        std::memcpy(out + offset, &word, sizeof word);
    }
    for (; offset < length; ++offset) {
        out[offset] = sharedField<std::byte>(bytes, offset).load(std::memory_order_relaxed);
    }
}

}  // namespace osa
