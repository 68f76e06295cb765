// Placing data and building the map. The format is told in ResourceFork.cpp.
#include "platform/resources/ForkLayout.h"

#include <CoreServices/MacErrors.h>
#include <CoreServices/Resources.h>

#include <algorithm>
#include <limits>

#include "platform/base/ByteWriter.h"
#include "platform/resources/ResourceDecompression.h"

namespace osa {
namespace {

using Source = std::shared_ptr<const ByteSource>;

constexpr std::uint64_t kLargestDataOffset = 0xFFFFFF;
constexpr std::uint16_t kTypeList = 28;
constexpr std::uint64_t kLargestFork = 0x7FFFFFFF;

/// Runs of the old fork and new blocks, one behind the other; neighbours in the old fork that stay
/// neighbours are one run.
class DataArea {
  public:
    explicit DataArea(Source old) : old_(std::move(old)) {}

    std::uint64_t size() const { return size_; }
    void addKept(CheckedRange range) {
        if (range.offset != run_.offset + run_.length) endRun(range.offset);
        run_.length += range.length;
        size_ += range.length;
    }
    void addNew(Source block) {
        endRun(0);
        size_ += block->size();
        parts_.push_back(std::move(block));
    }
    Source finish() {
        endRun(0);
        return std::make_shared<JoinedSource>(std::move(parts_));
    }

  private:
    void endRun(std::uint64_t nextStart) {
        if (run_.length > 0) parts_.push_back(std::make_shared<SubSource>(old_, run_));
        run_ = {nextStart, 0};
    }

    Source old_;
    CheckedRange run_;
    std::uint64_t size_ = 0;
    std::vector<Source> parts_;
};

/// Allocates nothing: it is asked for while a file is half written.
ForkHeader headerOf(std::uint64_t dataStart, std::uint64_t dataLength, std::uint64_t mapLength) {
    ForkHeader header{};
    std::size_t next = 0;
    for (const std::uint64_t field : {dataStart, dataStart + dataLength, dataLength, mapLength})
        for (const int shift : {24, 16, 8, 0})
            header[next++] = static_cast<std::byte>(field >> shift & 0xFF);
    return header;
}

}  // namespace

ForkHeader ForkImage::header(std::uint64_t dataStart) const {
    return headerOf(dataStart, data->size(), map->size());
}

Source ForkImage::fork() const {
    const auto head = header(kForkHeadLength);
    return std::make_shared<JoinedSource>(
        std::vector<Source>{std::make_shared<MemorySource>(ByteSpan(head)), reserved, data, map});
}

Result<void> ForkLayout::add(const Resource& resource, std::optional<ByteSpan> data) {
    if (resource.isNameLost) return Failure(mapReadErr);
    Entry entry{&resource, data.has_value(), {}, nullptr, 0};
    if (data) {
        if (data->size() > kLargestResource) return Failure(fileBoundsErr);
        ByteWriter block;
        block.u32(static_cast<std::uint32_t>(data->size())).bytes(*data);
        entry.data = std::make_shared<MemorySource>(block.view());
    } else {
        OSA_TRY(const CheckedRange range, storedRange(*old_, *resource.place));
        entry.kept = {*resource.place, range.offset + range.length - *resource.place};
    }
    entries_.push_back(std::move(entry));
    return {};
}

/// In the order of the old fork, then what has never been there. Resources that shared their data
/// go on sharing it.
Result<Source> ForkLayout::placeData() {
    std::vector<Entry*> order;
    order.reserve(entries_.size());
    for (Entry& entry : entries_) order.push_back(&entry);
    std::ranges::stable_sort(order, {}, [](const Entry* entry) {
        return entry->resource->place.value_or(std::numeric_limits<std::uint64_t>::max());
    });
    DataArea area(old_);
    const Entry* before = nullptr;
    for (Entry* const entry : order) {
        if (!entry->isNew && before != nullptr && before->kept.offset == entry->kept.offset) {
            entry->offset = before->offset;
            continue;
        }
        entry->offset = area.size();
        if (entry->offset > kLargestDataOffset) return Failure(fileBoundsErr);
        if (entry->isNew) {
            area.addNew(std::move(entry->data));
        } else {
            area.addKept(entry->kept);
            before = entry;
        }
    }
    if (area.size() > kLargestFork) return Failure(fileBoundsErr);
    return area.finish();
}

MapSize ForkLayout::mapSize() const {
    MapSize size{0, entries_.size(), 0};
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        const Resource& resource = *entries_[i].resource;
        if (i == 0 || resource.type != entries_[i - 1].resource->type) ++size.types;
        if (resource.name) size.names += 1 + resource.name->size();
    }
    return size;
}

/// With room for the copy of the header at its start.
Result<std::vector<std::byte>> ForkLayout::map(UInt16 attributes) const {
    const MapSize size = mapSize();
    if (!size.isExpressible()) return Failure(fileBoundsErr);
    ByteWriter types;
    ByteWriter references;
    ByteWriter names;
    types.u16(static_cast<UInt16>(size.types - 1));  // none: FFFF
    for (std::size_t i = 0; i < entries_.size();) {
        const ResType code = entries_[i].resource->type;
        const std::size_t first = i;
        types.fourCC(code);
        const std::size_t list = 2 + 8 * size.types + references.size();
        for (; i < entries_.size() && entries_[i].resource->type == code; ++i) {
            const Resource& resource = *entries_[i].resource;
            references.u16(static_cast<UInt16>(resource.id));
            references.u16(resource.name ? static_cast<UInt16>(names.size()) : kNoName);
            // What is written anew is written plain.
            const int cleared = resChanged | (entries_[i].isNew ? kResourceCompressed : 0);
            references.u8(static_cast<UInt8>(resource.attributes & ~cleared));
            references.u24(static_cast<UInt32>(entries_[i].offset)).u32(0);
            if (resource.name) names.pascalString(*resource.name);
        }
        types.u16(static_cast<UInt16>(i - first - 1)).u16(static_cast<UInt16>(list));
    }
    ByteWriter map;
    map.fill(ForkImage::kHeaderLength + 6).u16(attributes);
    map.u16(kTypeList).u16(static_cast<UInt16>(size.nameList()));
    map.bytes(types.view()).bytes(references.view()).bytes(names.view());
    return map.take();
}

Result<ForkImage> ForkLayout::finish(UInt16 mapAttributes) {
    ForkImage image;
    OSA_TRY(image.data, placeData());
    OSA_TRY(std::vector<std::byte> bytes, map(mapAttributes));
    std::ranges::copy(headerOf(kForkHeadLength, image.data->size(), bytes.size()), bytes.begin());
    image.map = std::make_shared<MemorySource>(bytes);

    ByteBlock reserved(kForkHeadLength - ForkImage::kHeaderLength);
    const auto kept = reserved.toFill().first(reservedLength_);
    if (!kept.empty()) OSA_CHECK(old_->readExactly(ForkImage::kHeaderLength, kept));
    std::ranges::fill(reserved.toFill().subspan(reservedLength_), std::byte{0});
    image.reserved = std::make_shared<MemorySource>(std::move(reserved));
    return image;
}

}  // namespace osa
