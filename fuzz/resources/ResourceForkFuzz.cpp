// Any bytes as a resource fork: every name and every resource is asked for.
#include <cstdlib>

#include "platform/resources/ResourceFork.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const osa::ByteSpan bytes(reinterpret_cast<const std::byte*>(data), size);
    const auto fork = osa::ResourceFork::open(std::make_shared<osa::MemorySource>(bytes));
    if (!fork) return 0;
    for (const osa::ResourceFork::Type& type : fork->types()) {
        for (const osa::ResourceReference& reference : fork->references(type)) {
            const auto name = fork->name(reference);
            if (name && fork->find(type.code, *name) == nullptr) std::abort();
            const auto range = fork->dataRange(reference);
            if (range && !range->fits(size)) std::abort();
        }
    }
    return 0;
}
