// Items given out: as descriptors of their own or as bytes, coerced.
#pragma once

#include "platform/events/ItemBlock.h"

namespace osa {

/// Where the calls that give out bytes write; each pointer but the buffer may be null.
struct DataOutput {
    DescType* type;
    void* buffer;
    Size maximumSize;
    Size* size;

    bool isPossible() const { return maximumSize >= 0 && (buffer != nullptr || maximumSize == 0); }
    void write(DescType dataType, ByteSpan data) const;
};

/// A new descriptor in `result`, which is the null descriptor on failure.
OSErr copyItem(const ItemView& item, DescType desiredType, AEDesc* result);
OSErr copyItemData(const ItemView& item, DescType desiredType, const DataOutput& output);
/// Type and size as they are; both pointers may be null.
void tellItem(const ItemView& item, DescType* type, Size* size);

}  // namespace osa
