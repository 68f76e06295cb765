// Parses the resource map.
//
//   header, from the start of the fork       map, from its start
//      0  u32  offset of the data               0   16  copy of the header, stale
//      4  u32  offset of the map               16    6  memory only
//      8  u32  length of the data              22  u16  attributes of the map
//     12  u32  length of the map               24  u16  offset of the type list
//                                              26  u16  offset of the name list
//
//   type list, from its count word           reference
//      0  u16  types - 1; 0xFFFF: none          0  s16  id
//      2  8 bytes a type:                       2  u16  offset of the name; 0xFFFF: none
//           u32  type                           4   u8  attributes
//           u16  references - 1                 5  u24  offset of the data
//           u16  offset of the references       8    4  memory only
//
//   data: u32 length, bytes; no alignment, any order, holes allowed
#include "platform/resources/ResourceFork.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <utility>

#include "platform/text/MacRoman.h"

namespace osa {
namespace {

constexpr std::size_t kHeaderSize = 16;
constexpr std::size_t kMapHeaderSize = 28;
constexpr std::size_t kReferenceSize = 12;
constexpr UInt16 kNone = 0xFFFF;

/// Nothing a map's 16-bit offsets and counts can reach lies behind this many bytes.
constexpr std::uint64_t kMapReach = 1u << 20;

bool isZero(ByteSpan bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](std::byte b) { return b == std::byte{0}; });
}

}  // namespace

/// Upper case, so that equal letters are equal bytes; é and É meet, é and e do not.
bool areEqualNames(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](unsigned char x, unsigned char y) {
        return x == y || macRomanUppercase(x) == macRomanUppercase(y);
    });
}

/// One entry of the type list.
struct ResourceFork::MapLayout {
    ResType code = 0;
    std::size_t count = 0;
    std::size_t list = 0;   // from the map's start
    std::size_t place = 0;  // in the map
    std::size_t rank = 0;   // the place of the first entry of the same type
};

Result<ResourceFork> ResourceFork::open(std::shared_ptr<const ByteSource> source) {
    const std::uint64_t size = source->size();
    if (size == 0) return Failure(eofErr);
    std::byte header[kHeaderSize] = {};
    const std::size_t present = std::min<std::uint64_t>(size, kHeaderSize);
    OSA_CHECK(source->readExactly(0, std::span(header, present)));
    if (isZero(header)) return Failure(eofErr);
    if (present < kHeaderSize) return Failure(mapReadErr);

    ByteReader fields(header, kHeaderSize);
    ResourceFork fork;
    fork.dataStart_ = fields.u32();
    const std::uint64_t mapStart = fields.u32();
    fields.skip(4);
    const std::uint64_t mapLength = fields.u32();
    if (mapStart < kHeaderSize || mapStart > size || fork.dataStart_ > size)
        return Failure(mapReadErr);

    fork.reservedLength_ =
        std::min<std::uint64_t>(
            {kForkHeadLength, std::max<std::uint64_t>(fork.dataStart_, kHeaderSize), mapStart}) -
        kHeaderSize;
    // Some writers give a map length that is too short: when the map does not hold together within
    // it, it is tried once more with all that follows.
    const std::uint64_t available = std::min(size - mapStart, kMapReach);
    fork.source_ = std::move(source);
    const std::uint64_t stated = std::min(mapLength, available);
    for (const std::uint64_t length : {stated, available}) {
        if (length < kMapHeaderSize || (length == fork.map_.size())) continue;
        OSA_TRY(fork.map_, readRange(*fork.source_, {mapStart, length}));
        if (fork.parseMap()) return fork;
    }
    return Failure(mapReadErr);
}

bool ResourceFork::parseMap() {
    ByteReader map(map_.data(), map_.size());
    map.seek(22);
    mapAttributes_ = map.u16();
    const std::size_t typeList = map.u16();
    nameList_ = map.u16();
    if (typeList + 2 > map_.size()) {
        // A map that ends where the type list should begin can only be an empty one.
        return typeList == kMapHeaderSize && map_.size() == kMapHeaderSize;
    }
    map.seek(typeList);
    const UInt16 last = map.u16();
    const std::size_t count = last == kNone ? 0 : std::size_t{last} + 1;
    if (count > map.remaining() / 8) return false;

    std::vector<MapLayout> layouts(count);
    std::size_t total = 0;
    for (std::size_t i = 0; i < count; ++i) {
        layouts[i].code = map.fourCC();
        const UInt16 lastReference = map.u16();
        layouts[i].count = lastReference == kNone ? 0 : std::size_t{lastReference} + 1;
        layouts[i].list = typeList + map.u16();
        layouts[i].place = layouts[i].rank = i;
        const std::uint64_t bytes = std::uint64_t{layouts[i].count} * kReferenceSize;
        if (!CheckedRange{layouts[i].list, bytes}.fits(map_.size())) return false;
        total += layouts[i].count;
    }
    // Types may share lists, which no honest file does twelvefold: memory stays in proportion.
    if (total > map_.size()) return false;
    references_.reserve(total);
    types_.reserve(count);
    expandTypes(layouts);
    return true;
}

void ResourceFork::expandTypes(std::span<MapLayout> layouts) {
    std::ranges::sort(layouts, {},
                      [](const MapLayout& each) { return std::pair(each.code, each.place); });
    for (std::size_t i = 1; i < layouts.size(); ++i)
        if (layouts[i].code == layouts[i - 1].code) layouts[i].rank = layouts[i - 1].rank;
    std::ranges::sort(layouts, {},
                      [](const MapLayout& each) { return std::pair(each.rank, each.place); });

    types_.clear();
    references_.clear();
    for (const MapLayout& layout : layouts) {
        if (layout.count == 0) continue;
        if (types_.empty() || types_.back().code != layout.code)
            types_.push_back({layout.code, static_cast<UInt32>(references_.size()), 0});
        types_.back().count += static_cast<UInt32>(layout.count);
        ByteReader list(map_.data(), map_.size());
        list.seek(layout.list);
        for (std::size_t i = 0; i < layout.count; ++i) {
            ResourceReference reference;
            reference.type = layout.code;
            reference.id = list.s16();
            reference.nameOffset = list.u16();
            reference.attributes = list.u8();
            reference.dataOffset = list.u24();
            list.skip(4);
            references_.push_back(reference);
        }
    }
}

const ResourceFork::Type* ResourceFork::findType(ResType code) const {
    const auto found = std::ranges::find(types_, code, &Type::code);
    return found == types_.end() ? nullptr : &*found;
}

const ResourceReference* ResourceFork::find(ResType type, SInt16 id) const {
    const Type* const entry = findType(type);
    if (entry == nullptr) return nullptr;
    for (const ResourceReference& reference : references(*entry))
        if (reference.id == id) return &reference;
    return nullptr;
}

const ResourceReference* ResourceFork::find(ResType type, std::string_view wanted) const {
    const Type* const entry = findType(type);
    if (entry == nullptr) return nullptr;
    for (const ResourceReference& reference : references(*entry)) {
        const auto stored = name(reference);
        if (stored && areEqualNames(*stored, wanted)) return &reference;
    }
    return nullptr;
}

std::optional<std::string_view> ResourceFork::name(const ResourceReference& reference) const {
    if (reference.nameOffset == kNoName) return std::nullopt;
    ByteReader names(map_.data(), map_.size());
    names.seek(nameList_ + reference.nameOffset);
    const std::string_view name = names.pascalString();
    if (!names.ok()) return std::nullopt;
    return name;
}

Result<CheckedRange> ResourceFork::dataRange(const ResourceReference& reference) const {
    return loadableRange(*source_, dataStart_ + reference.dataOffset);
}

Result<CheckedRange> storedRange(const ByteSource& fork, std::uint64_t start) {
    std::byte word[4] = {};
    if (!CheckedRange{start, sizeof word}.fits(fork.size())) return Failure(mapReadErr);
    OSA_CHECK(fork.readExactly(start, word));
    const CheckedRange range{start + sizeof word, ByteReader(word, sizeof word).u32()};
    // Past the data area is tolerated, past the fork is not.
    if (!range.fits(fork.size())) return Failure(mapReadErr);
    return range;
}

Result<CheckedRange> loadableRange(const ByteSource& fork, std::uint64_t start) {
    OSA_TRY(const CheckedRange range, storedRange(fork, start));
    if (range.length > kLargestResource) return Failure(memFullErr);
    return range;
}

}  // namespace osa
