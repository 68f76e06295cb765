// Items given out: as descriptors of their own or as bytes, coerced.
#include "platform/events/ItemValues.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <cstring>

namespace osa {

void DataOutput::write(DescType dataType, ByteSpan data) const {
    if (type != nullptr) *type = dataType;
    if (size != nullptr) *size = static_cast<Size>(data.size());
    const std::size_t copied = std::min(static_cast<std::size_t>(maximumSize), data.size());
    if (copied > 0) std::memcpy(buffer, data.data(), copied);
}

OSErr copyItem(const ItemView& item, DescType desiredType, AEDesc* result) {
    AEInitializeDesc(result);
    AEDesc whole;
    const OSErr made =
        AECreateDesc(item.type, item.data.data(), static_cast<Size>(item.data.size()), &whole);
    if (made != noErr || desiredType == typeWildCard || desiredType == item.type) {
        *result = whole;
        return made;
    }
    const OSErr status = AECoerceDesc(&whole, desiredType, result);
    AEDisposeDesc(&whole);
    return status;
}

OSErr copyItemData(const ItemView& item, DescType desiredType, const DataOutput& output) {
    if (desiredType == typeWildCard || desiredType == item.type) {
        output.write(item.type, item.data);
        return noErr;
    }
    AEDesc coerced;
    const OSErr status = copyItem(item, desiredType, &coerced);
    if (status != noErr) return status;
    output.write(coerced.descriptorType, dataOf(coerced));
    AEDisposeDesc(&coerced);
    return noErr;
}

void tellItem(const ItemView& item, DescType* type, Size* size) {
    if (type != nullptr) *type = item.type;
    if (size != nullptr) *size = static_cast<Size>(item.data.size());
}

}  // namespace osa
