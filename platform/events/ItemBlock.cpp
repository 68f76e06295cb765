// Reading the blocks of lists, records and events, and what counts as one.
#include "platform/events/ItemBlock.h"

#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstring>

#include "platform/events/TypeTable.h"

namespace osa {
namespace {

/// The fields at an offset that was compared with the size.
template <std::size_t N>
std::array<UInt32, N> readFields(ByteSpan bytes, UInt32 offset, std::endian order) {
    std::array<UInt32, N> fields;
    if (order == std::endian::native) {
        std::memcpy(fields.data(), bytes.data() + offset, sizeof fields);
        return fields;
    }
    ByteReader reader(bytes.subspan(offset, sizeof fields));
    for (UInt32& field : fields) {
        field = order == std::endian::big ? reader.u32() : reader.u32LittleEndian();
    }
    return fields;
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

std::atomic_ref<UInt64> hintOf(ByteSpan block, std::size_t slot) {
    return sharedField<UInt64>(block, offsetof(BlockHeader, hints) + slot * sizeof(UInt64));
}

bool isHeaderPossible(const BlockHeader& header, std::size_t size) {
    if (header.signature != kBlockSignature || header.itemsOffset % 8 != 0) return false;
    if (header.itemsOffset < sizeof header || header.itemsOffset > size) return false;
    return header.attributeCount <= (header.itemsOffset - sizeof header) / sizeof(ItemHeader) &&
           header.itemCount <= (size - header.itemsOffset) / sizeof(ItemHeader);
}

}  // namespace

Result<BlockHeader> readBlockHeader(ByteSpan block, std::endian order) {
    if (block.size() < sizeof(BlockHeader)) return Failure(errAECorruptData);
    const auto [signature, attributes, items, itemsOffset] = readFields<4>(block, 0, order);
    const BlockHeader header{signature, attributes, items, itemsOffset, {}};
    if (!isHeaderPossible(header, block.size())) return Failure(errAECorruptData);
    return header;
}

Result<ItemView> readItem(ByteSpan block, UInt32 offset, UInt32 limit, std::endian order) {
    if (offset > limit || limit - offset < sizeof(ItemHeader)) return Failure(errAECorruptData);
    const auto [keyword, type, size] = readFields<3>(block, offset, order);
    if (paddedSize(size) > limit - offset - sizeof(ItemHeader)) return Failure(errAECorruptData);
    return ItemView{keyword, type, offset, block.subspan(offset + sizeof(ItemHeader), size)};
}

Result<BlockView> BlockView::open(ByteSpan bytes) {
    BlockView view;
    if (bytes.empty()) return view;
    OSA_TRY(view.header_, readBlockHeader(bytes));
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
    if (offset % 8 != 0 || offset < begin(section)) return Failure(errAECorruptData);
    return readItem(bytes_, offset, end(section));
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

BlockView::Place BlockView::nearestBefore(UInt32 index) const {
    Place best{0, 0, 0};
    Place spare{1, begin(Section::items), 0};
    UInt32 spareIndex = 0;
    for (std::size_t slot = 0; slot < header_.hints.size(); ++slot) {
        const UInt64 hint = hintOf(bytes_, slot).load(std::memory_order_relaxed);
        const Place place{static_cast<UInt32>(hint >> 32), static_cast<UInt32>(hint), slot};
        if (place.index <= index && place.index > best.index) best = place;
        // A hint that is free yet, or the farthest: who left that one has come to the end.
        if (slot == 0 || place.index == 0 || (spareIndex != 0 && place.index > spareIndex)) {
            spareIndex = place.index;
            spare.slot = slot;
        }
    }
    return best.index > 0 ? best : spare;
}

Result<ItemView> BlockView::item(SInt32 index) const {
    if (index < 1 || static_cast<UInt32>(index) > count(Section::items)) {
        return Failure(errAEIllegalIndex);
    }
    const auto wanted = static_cast<UInt32>(index);
    auto [reached, offset, slot] = nearestBefore(wanted);
    for (;; ++reached) {
        Result<ItemView> found = at(Section::items, offset);
        if (!found) return found;
        if (reached == wanted) {
            hintOf(bytes_, slot).store(UInt64{wanted} << 32 | offset, std::memory_order_relaxed);
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
    if (length < sizeof(BlockHeader) || !isAligned ||
        readFields<1>(bytes, 0, std::endian::native)[0] != kBlockSignature) {
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
