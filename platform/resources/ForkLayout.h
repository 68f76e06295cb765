// Lays a resource fork out anew: data without holes, and the map behind it.
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <vector>

#include "platform/resources/ResourceMap.h"

namespace osa {

/// What a map's offsets, which old readers take for signed numbers of 16 bits, must express.
struct MapSize {
    std::size_t types = 0;
    std::size_t references = 0;
    std::size_t names = 0;  ///< bytes

    std::size_t nameList() const { return 28 + 2 + 8 * types + 12 * references; }
    bool isExpressible() const { return nameList() <= 0x7FFF && names <= 0x7FFF; }
};

using ForkHeader = std::array<std::byte, 16>;

/// A whole fork, ready to be written: what did not change is read from the old one meanwhile.
struct ForkImage {
    std::shared_ptr<const ByteSource> reserved;  ///< behind the header, up to kForkHeadLength
    std::shared_ptr<const ByteSource> data;
    std::shared_ptr<const ByteSource> map;

    static constexpr std::size_t kHeaderLength = sizeof(ForkHeader);
    /// The header of the fork when data, and the map behind it, begin at `dataStart`.
    ForkHeader header(std::uint64_t dataStart) const;
    /// The bytes of the fork as usual, data behind the head.
    std::shared_ptr<const ByteSource> fork() const;
};

class ForkLayout {
  public:
    /// `reservedLength` as ResourceFork's.
    ForkLayout(std::shared_ptr<const ByteSource> old, std::uint64_t reservedLength)
        : old_(std::move(old)), reservedLength_(reservedLength) {}

    /// The next resource of the map, types together. `data` is its new data; without it, it keeps
    /// the stored bytes: mapReadErr when they, or its name, are not all there. The resource must
    /// outlive the layout, the data need not.
    Result<void> add(const Resource& resource, std::optional<ByteSpan> data);
    /// fileBoundsErr: more than a map can express.
    Result<ForkImage> finish(UInt16 mapAttributes);
    /// Where the length word of the nth resource lies, counted from the data; when finished.
    std::uint64_t offset(std::size_t nth) const { return entries_[nth].offset; }

  private:
    struct Entry {
        const Resource* resource;
        bool isNew;
        CheckedRange kept;                       // with the length word, in the old fork
        std::shared_ptr<const ByteSource> data;  // new, with the length word
        std::uint64_t offset;
    };
    Result<std::shared_ptr<const ByteSource>> placeData();
    Result<std::vector<std::byte>> map(UInt16 attributes) const;
    MapSize mapSize() const;

    std::shared_ptr<const ByteSource> old_;
    std::uint64_t reservedLength_;
    std::vector<Entry> entries_;
};

}  // namespace osa
