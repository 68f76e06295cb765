// Any bytes as a compressed resource: what comes out has the promised length.
#include <cstdlib>

#include "platform/resources/ResourceDecompression.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const osa::ByteSpan bytes(reinterpret_cast<const std::byte*>(data), size);
    const auto expanded = osa::expandResource(bytes);
    if (expanded && expanded->size() != osa::expandedLength(bytes)) std::abort();
    return 0;
}
