// Descriptors' data for coercions.
#include "platform/events/CoercionData.h"

#include <CoreServices/MacMemory.h>

#include <limits>

namespace osa {

ByteSpan dataOf(const AEDesc* desc) {
    if (desc->dataHandle == nullptr) return {};
    return {reinterpret_cast<const std::byte*>(*desc->dataHandle),
            static_cast<std::size_t>(GetHandleSize(desc->dataHandle))};
}

OSErr makeDesc(DescType type, std::string_view bytes, AEDesc* result) {
    if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<Size>::max())) {
        return memFullErr;
    }
    return AECreateDesc(type, bytes.data(), static_cast<Size>(bytes.size()), result);
}

}  // namespace osa
