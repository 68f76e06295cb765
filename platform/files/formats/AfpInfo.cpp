// Reading AfpInfo records.
#include "platform/files/formats/AfpInfo.h"

namespace osa {

std::optional<FinderInfoBytes> parseAfpInfo(ByteSpan bytes) {
    ByteReader reader(bytes);
    if (reader.u32() != 0x41465000) return std::nullopt;
    // Servers disagree about the version's byte order; both spell 1.0.
    const std::uint32_t version = reader.u32();
    if (version != 0x00000100 && version != 0x00010000) return std::nullopt;
    reader.skip(8);
    const ByteSpan info = reader.bytes(32);
    if (!reader.ok()) return std::nullopt;
    return finderInfoBytes(info);
}

}  // namespace osa
