// A validated view of one resource fork: header and map in memory, data read on demand.
#pragma once

#include <CoreServices/MacTypes.h>

#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "platform/base/ByteSource.h"

namespace osa {

/// The largest resource that is ever read or expanded. The format's 24-bit data offsets keep real
/// ones below 16 MiB; the room above is for a last resource that reaches past them.
inline constexpr std::uint64_t kLargestResource = 32u << 20;

/// In place of the offset of a name.
inline constexpr UInt16 kNoName = 0xFFFF;

/// Header and the bytes reserved behind it, in a fork laid out as usual.
inline constexpr std::uint64_t kForkHeadLength = 256;

/// One entry of the map. What it points at is checked when it is asked for: a file with one spoilt
/// resource still gives the others.
struct ResourceReference {
    ResType type = 0;
    SInt16 id = 0;
    UInt8 attributes = 0;
    UInt16 nameOffset = 0;
    UInt32 dataOffset = 0;
};

/// Whether the Resource Manager takes two names for the same: Mac Roman, upper and lower case
/// alike, accents told apart.
bool areEqualNames(std::string_view a, std::string_view b);

/// The bytes behind the length word at `start`. mapReadErr when they reach past the end.
Result<CheckedRange> storedRange(const ByteSource& fork, std::uint64_t start);
/// The same for reading them at once: memFullErr when there are more than kLargestResource.
Result<CheckedRange> loadableRange(const ByteSource& fork, std::uint64_t start);

class ResourceFork {
  public:
    /// A type and its run of references().
    struct Type {
        ResType code = 0;
        UInt32 first = 0;
        UInt32 count = 0;
    };

    /// Reads header and map. eofErr: there is no fork (no bytes, or a header of zeros, which is
    /// what programs that know no forks leave behind). mapReadErr: bytes that are no resource map.
    static Result<ResourceFork> open(std::shared_ptr<const ByteSource> source);

    /// Types in map order, each once: a repeated type continues at the place of its first entry.
    std::span<const Type> types() const { return types_; }
    /// All references, by type, within a type in map order.
    std::span<const ResourceReference> references() const { return references_; }
    std::span<const ResourceReference> references(const Type& type) const {
        return std::span(references_).subspan(type.first, type.count);
    }
    const Type* findType(ResType code) const;

    // The first match in map order; null when there is none.
    const ResourceReference* find(ResType type, SInt16 id) const;
    const ResourceReference* find(ResType type, std::string_view name) const;

    /// The name as stored; none when the resource has none or the map ends before it does.
    std::optional<std::string_view> name(const ResourceReference& reference) const;

    /// Where the stored bytes lie in the source. mapReadErr when they reach past the fork's end;
    /// memFullErr when there are more than kLargestResource.
    Result<CheckedRange> dataRange(const ResourceReference& reference) const;

    const ByteSource& source() const { return *source_; }
    const std::shared_ptr<const ByteSource>& sharedSource() const { return source_; }
    std::uint64_t dataStart() const { return dataStart_; }
    UInt16 mapAttributes() const { return mapAttributes_; }
    /// Of the 240 bytes behind the header that are free for system and applications, how many come
    /// before data and map.
    std::uint64_t reservedLength() const { return reservedLength_; }

  private:
    struct MapLayout;
    ResourceFork() = default;
    bool parseMap();
    void expandTypes(std::span<MapLayout> layouts);

    std::shared_ptr<const ByteSource> source_;
    std::uint64_t dataStart_ = 0;
    std::uint64_t reservedLength_ = 0;
    UInt16 mapAttributes_ = 0;
    RangeBytes map_;
    std::size_t nameList_ = 0;
    std::vector<Type> types_;
    std::vector<ResourceReference> references_;
};

}  // namespace osa
