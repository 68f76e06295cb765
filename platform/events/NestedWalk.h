// Walks through a descriptor and everything nested in it, however deep, without recursion.
#pragma once

#include <deque>

#include "platform/events/ItemBlock.h"

namespace osa {

class NestedWalk {
  public:
    enum class Kind { open, leaf, close };
    struct Step {
        Kind kind = Kind::leaf;
        bool isOutermost = false;
        DescType containerType = typeNull;  ///< of the container that the item is in
        Section section = Section::items;   ///< of it
        ItemView item;  ///< its offset counts from the start of all data; of a close, only the type
    };
    /// Whether an item is to be opened; one of no bytes then opens and closes at once.
    using IsContainer = bool (*)(const ItemView& item, ByteSpan allData);

    /// The data behind what was walked through may change meanwhile, also the headers of blocks
    /// that are open.
    NestedWalk(ByteSpan data, std::endian order, IsContainer isContainer)
        : data_(data), order_(order), isContainer_(isContainer) {}

    // Both answer false at the end or when a block to be opened is damaged; they throw
    // std::bad_alloc. start gives the outermost descriptor itself and comes first; items are given
    // before attributes.
    bool start(DescType type, bool isContainer, Step& step);
    bool next(Step& step);
    /// Why the walk ended: 0 or errAECorruptData.
    OSStatus status() const { return status_; }

  private:
    /// An open container. It takes 32 bytes, a level of data at least 48.
    struct Frame {
        DescType type;
        UInt32 start;
        UInt32 itemsOffset;
        UInt32 end;
        UInt32 attributeCount;
        Section section;
        UInt32 next;
        UInt32 left;

        UInt32 limit() const { return section == Section::items ? end : itemsOffset; }
    };

    bool enter(const ItemView& item, bool isContainer, Step& step);
    bool open(const ItemView& item);
    bool fail();

    ByteSpan data_;
    std::endian order_;
    IsContainer isContainer_;
    std::deque<Frame> frames_;
    OSStatus status_ = 0;
};

}  // namespace osa
