// Descriptors made of bytes.
#include "platform/events/coercions/CoercionData.h"

#include <limits>

namespace osa {

OSErr makeDesc(DescType type, std::string_view bytes, AEDesc* result) {
    if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<Size>::max())) {
        return memFullErr;
    }
    return AECreateDesc(type, bytes.data(), static_cast<Size>(bytes.size()), result);
}

}  // namespace osa
