// Any bytes as a resource fork: every name and every resource is asked for; then the fork is laid
// out anew, and what comes out holds the same resources.
#include <CoreServices/Resources.h>

#include <algorithm>
#include <cstdlib>

#include "platform/resources/ForkLayout.h"

namespace osa {
namespace {

using Source = std::shared_ptr<const ByteSource>;

void require(bool holds) {
    if (!holds) std::abort();
}

void askForEverything(const ResourceFork& fork, std::size_t size) {
    for (const ResourceFork::Type& type : fork.types()) {
        for (const ResourceReference& reference : fork.references(type)) {
            const auto name = fork.name(reference);
            require(!name || fork.find(type.code, *name) != nullptr);
            const auto range = fork.dataRange(reference);
            require(!range || range->fits(size));
        }
    }
}

/// The fork as it lies in a data fork when it could not be brought to its place.
Source laidAside(const Source& old, const ForkImage& image) {
    const std::uint64_t aside =
        std::max(old->size(), kForkHeadLength + image.data->size() + image.map->size());
    const std::vector<std::byte> gap(aside - old->size());
    const ForkHeader header = image.header(aside);
    return overlaid(std::make_shared<JoinedSource>(std::vector<Source>{
                        old, std::make_shared<MemorySource>(ByteSpan(gap)), image.data, image.map}),
                    0, header);
}

std::string stored(const ResourceFork& fork, const ResourceReference& reference) {
    const auto range = fork.dataRange(reference);
    if (!range) return "status " + std::to_string(range.status());
    return std::string(asText(*readRange(fork.source(), *range)));
}

/// Whether `written` is `old`, but for the first resource's data if there is some.
void compare(const ResourceFork& old, const Source& written, const std::optional<ByteSpan>& data) {
    const auto again = ResourceFork::open(written);
    require(again.ok());
    require(again->mapAttributes() == old.mapAttributes());
    require(again->types().size() == old.types().size());
    require(again->references().size() == old.references().size());
    for (std::size_t i = 0; i < old.references().size(); ++i) {
        const ResourceReference& was = old.references()[i];
        const ResourceReference& is = again->references()[i];
        const bool isChanged = i == 0 && data;
        require(is.type == was.type && is.id == was.id);
        require(is.attributes == (was.attributes & ~(resChanged | (isChanged ? 1 : 0))));
        require(again->name(is) == old.name(was));
        require(stored(*again, is) == (isChanged ? std::string(asText(*data)) : stored(old, was)));
    }
}

void writeAndRead(const ResourceFork& fork, const std::optional<ByteSpan>& data) {
    const ResourceMap map(fork);
    ForkLayout layout(fork.sharedSource(), fork.reservedLength());
    bool isFirst = true;
    for (const ResourceMap::Type& type : map.types()) {
        for (const auto& resource : type.resources) {
            if (!layout.add(*resource, isFirst ? data : std::nullopt).ok()) return;
            isFirst = false;
        }
    }
    const auto image = layout.finish(map.attributes);
    if (!image.ok()) return;
    compare(fork, image->fork(), data);
    compare(fork, laidAside(fork.sharedSource(), *image), data);
}

}  // namespace
}  // namespace osa

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const osa::ByteSpan bytes(reinterpret_cast<const std::byte*>(data), size);
    const auto fork = osa::ResourceFork::open(std::make_shared<osa::MemorySource>(bytes));
    if (!fork) return 0;
    osa::askForEverything(*fork, size);
    osa::writeAndRead(*fork, std::nullopt);
    osa::writeAndRead(*fork, osa::asBytes("changed"));
    return 0;
}
