// Any bytes as an archive: the root as property-list objects, then all groups to the end.
#include "platform/foundation/TypedStream.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const osa::ByteSpan bytes(reinterpret_cast<const std::byte*>(data), size);
    osa::TypedStream(bytes).readRoot();
    osa::TypedStream stream(bytes);
    while (stream.ok() && !stream.atEnd()) stream.readGroup();
    return 0;
}
