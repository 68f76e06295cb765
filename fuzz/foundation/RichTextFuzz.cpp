// Any bytes as rich text: a document never has more characters than bytes.
#include <cstdlib>

#include "platform/foundation/RichText.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const osa::ByteSpan bytes(reinterpret_cast<const std::byte*>(data), size);
    if (osa::plainTextOfRichText(bytes).size() > size) std::abort();
    return 0;
}
