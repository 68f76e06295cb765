// The one block in which a list, record or event keeps its items, nested ones included.
//
//   block  = header attribute* item*                        fields of 4 bytes, in host order
//   header = signature attributes items start hints[16]     two counts; where the items begin
//   item   = keyword type size flags data pad               pad: zeros up to a multiple of 8
//
// A nested list is the block of the list as an item's data, so that copying and disposing cost the
// same at any depth. A block of no bytes stands for an empty one.
//
// A hint is the index and the offset of an item that was looked up; there are two, for two that go
// through a list at once. The lowest flag says that an event's parameter was read. Both are written
// while the descriptor is only read, on several threads at once: they are accessed atomically, in
// the outermost block alone.
//
// Anyone can write into the block or make one with AECreateDesc. Nothing in it is believed: every
// step is compared with the block's size, and answers errAECorruptData rather than leave it.
#pragma once

#include <CoreServices/AEDataModel.h>

#include <array>
#include <bit>

#include "platform/base/ByteReader.h"
#include "platform/base/Result.h"

namespace osa {

enum class Shape { none, list, record, event };
enum class Section { attributes, items };

inline constexpr UInt32 kBlockSignature = 'AEit';
inline constexpr UInt32 kItemWasRead = 1;

struct BlockHeader {
    UInt32 signature;
    UInt32 attributeCount;
    UInt32 itemCount;
    UInt32 itemsOffset;
    std::array<UInt64, 2> hints;
};
struct ItemHeader {
    AEKeyword keyword;
    DescType type;
    UInt32 size;
    UInt32 flags;
};
static_assert(sizeof(BlockHeader) == 32 && sizeof(ItemHeader) == 16);

/// Bytes that `size` bytes of data take up in an item.
constexpr UInt64 paddedSize(UInt64 size) {
    return (size + 7) / 8 * 8;
}

struct ItemView {
    AEKeyword keyword = 0;
    DescType type = typeNull;
    UInt32 offset = 0;  ///< of the item's header in its block
    ByteSpan data;

    UInt32 length() const {
        return static_cast<UInt32>(sizeof(ItemHeader) + paddedSize(data.size()));
    }
};

/// The header of a block, its hints left out, and an item that ends at `limit` at the latest; with
/// the fields in the order given. errAECorruptData for what is impossible.
Result<BlockHeader> readBlockHeader(ByteSpan block, std::endian order = std::endian::native);
Result<ItemView> readItem(ByteSpan block, UInt32 offset, UInt32 limit,
                          std::endian order = std::endian::native);

/// A block that is read. It owns nothing.
class BlockView {
  public:
    /// errAECorruptData when the bytes cannot be a block. Constant time: items are not looked at.
    static Result<BlockView> open(ByteSpan bytes);

    UInt32 count(Section section) const;
    /// Offsets of a section's first item and of its end.
    UInt32 begin(Section section) const;
    UInt32 end(Section section) const;
    /// The item whose header is at `offset`, which must lie in the section whole.
    Result<ItemView> at(Section section, UInt32 offset) const;
    /// The first one with the keyword, else errAEDescNotFound.
    Result<ItemView> find(Section section, AEKeyword keyword) const;
    /// Calls `visit` with every item until it answers false. errAECorruptData when one is damaged.
    template <typename Visit>
    OSStatus forEach(Section section, Visit visit) const;

    // Of the outermost block of a descriptor alone.

    /// The item at an index counted from 1, else errAEIllegalIndex; remembers where it was.
    Result<ItemView> item(SInt32 index) const;
    bool wasRead(const ItemView& item) const;
    void markRead(const ItemView& item) const;

  private:
    struct Place {
        UInt32 index;
        UInt32 offset;
        std::size_t slot;  ///< of the hint that says so, or is to say what is found
    };
    Place nearestBefore(UInt32 index) const;

    ByteSpan bytes_;
    BlockHeader header_{kBlockSignature, 0, 0, 0, {}};
};

template <typename Visit>
OSStatus BlockView::forEach(Section section, Visit visit) const {
    UInt32 offset = begin(section);
    for (UInt32 i = 0; i < count(section); ++i) {
        const Result<ItemView> item = at(section, offset);
        if (!item) return item.status();
        if (!visit(*item)) break;
        offset += item->length();
    }
    return 0;
}

struct Container {
    Shape shape = Shape::none;
    BlockView block;
};

/// A descriptor's data; empty for a null handle.
ByteSpan dataOf(const AEDesc& desc);
/// What a descriptor of that type is, by the type or, when that is not known, by its data.
Shape shapeOf(DescType type, ByteSpan data);
/// paramErr for null, errAEWrongDataType for what is no container, errAECorruptData.
Result<Container> openContainer(const AEDesc* desc);
/// The same for events only: errAENotAppleEvent for everything else.
Result<BlockView> openEvent(const AEDesc* desc);

/// The block without items.
BlockHeader emptyBlock();
/// Copies data that may be a block which others read meanwhile.
void copyShared(void* target, const void* source, Size size);

struct NewItem {
    AEKeyword keyword;
    DescType type;
    const void* data;  ///< may lie in the very block that it is put into
    Size size;
};
/// What data or a descriptor become as an item: null has no data.
NewItem newItem(AEKeyword keyword, DescType type, const void* data, Size size);
NewItem newItem(AEKeyword keyword, const AEDesc& desc);

// Changes. `container` was opened, and `old` is of that block. On failure nothing changed.

/// Puts an item at the section's end or, unless `old` is null, in its place.
OSErr putItem(AEDesc* container, Section section, const ItemView* old, const NewItem& item);
OSErr removeItem(AEDesc* container, Section section, const ItemView& old);

}  // namespace osa
