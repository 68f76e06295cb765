// Finder information as servers keep it in attributes: records of their own, or a whole header.
#include "platform/files/formats/AfpInfo.h"
#include "platform/files/formats/AppleDouble.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace osa;
    const ByteSpan bytes(reinterpret_cast<const std::byte*>(data), size);
    auto info = parseAfpInfo(bytes);
    if (!info) {
        const auto header = AppleDouble::parse(std::make_shared<MemorySource>(bytes));
        if (!header.ok()) return 0;
        const auto found = header->finderInfoContent();
        if (found.ok()) info = *found;
    }
    if (!info) return 0;
    for (const bool isFolder : {false, true}) {
        (void)basicFinderInfo(*info, isFolder);
        (void)extendedFinderInfo(*info, isFolder);
    }
    return 0;
}
