// Any bytes as a flattened descriptor: what is accepted can be read, and is flattened to the same.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "fuzz/events/ReadEverything.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    AEDesc desc;
    if (AEUnflattenDescFromBytes(data, size, &desc) != 0) {
        osa::fuzz::require(desc.dataHandle == nullptr);
        return 0;
    }
    const Size length = AESizeOfFlattenedDesc(&desc);
    osa::fuzz::require(length > 0 && static_cast<std::size_t>(length) <= size);
    osa::fuzz::readEverything(desc);
    std::vector<char> again(static_cast<std::size_t>(length));
    osa::fuzz::require(AEFlattenDesc(&desc, again.data(), length, nullptr) == 0);
    osa::fuzz::require(std::memcmp(again.data(), data, again.size()) == 0);
    AEDisposeDesc(&desc);
    return 0;
}
