// Binary property lists.
#include "fuzz/cf/CheckPropertyList.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const osa::ByteSpan bytes(reinterpret_cast<const std::byte*>(data), size);
    return osa::plist::fuzzPropertyList(
        [&](const osa::plist::Maker& maker) { return osa::plist::readBinary(bytes, maker); });
}
