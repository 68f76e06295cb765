// Walks through a descriptor and everything nested in it, however deep, without recursion.
#include "platform/events/NestedWalk.h"

#include <CoreServices/MacErrors.h>

namespace osa {

bool NestedWalk::fail() {
    status_ = errAECorruptData;
    frames_.clear();
    return false;
}

bool NestedWalk::open(const ItemView& item) {
    if (item.data.empty()) {
        frames_.push_back({item.type, 0, 0, 0, 0, Section::attributes, 0, 0});
        return true;
    }
    const Result<BlockHeader> header = readBlockHeader(item.data, order_);
    if (!header) return fail();
    const auto start = static_cast<UInt32>(item.data.data() - data_.data());
    const UInt32 items = start + header->itemsOffset;
    const UInt32 end = start + static_cast<UInt32>(item.data.size());
    frames_.push_back({item.type, start, items, end, header->attributeCount, Section::items, items,
                       header->itemCount});
    return true;
}

bool NestedWalk::enter(const ItemView& item, bool isContainer, Step& step) {
    step.kind = isContainer ? Kind::open : Kind::leaf;
    step.item = item;
    return !isContainer || open(item);
}

bool NestedWalk::start(DescType type, bool isContainer, Step& step) {
    step.isOutermost = true;
    return enter({0, type, 0, data_}, isContainer, step);
}

bool NestedWalk::next(Step& step) {
    if (frames_.empty()) return false;
    step.isOutermost = false;
    Frame& frame = frames_.back();
    if (frame.left == 0 && frame.section == Section::items) {
        if (frame.next != frame.limit()) return fail();
        frame.section = Section::attributes;
        frame.next = frame.start + sizeof(BlockHeader);
        frame.left = frame.attributeCount;
    }
    if (frame.left == 0) {
        if (frame.next != frame.limit()) return fail();
        step.kind = Kind::close;
        step.item = {0, frame.type, 0, {}};
        frames_.pop_back();
        return true;
    }
    const Result<ItemView> item = readItem(data_, frame.next, frame.limit(), order_);
    if (!item) return fail();
    frame.next += item->length();
    --frame.left;
    step.containerType = frame.type;
    step.section = frame.section;
    return enter(*item, isContainer_(*item, data_), step);
}

}  // namespace osa
