// A file handed over by itself: whatever it is, its parts can be read.
#include <cstdlib>

#include "platform/files/ForkContainer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace osa;
    const ByteSpan bytes(reinterpret_cast<const std::byte*>(data), size);
    const auto found = openForkContainer(std::make_shared<MemorySource>(bytes));
    if (!found.ok()) std::abort();
    for (const auto& fork : {found->dataFork, found->resourceFork}) {
        if (fork->size() > size || !readRange(*fork, {0, fork->size()}).ok()) std::abort();
    }
    return 0;
}
