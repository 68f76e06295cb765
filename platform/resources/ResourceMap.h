// The map of an open resource file: its resources by type, in the order that decides indexed
// access.
#pragma once

#include <CoreServices/MacTypes.h>

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/resources/ResourceFork.h"

namespace osa {

struct Resource {
    ResType type = 0;
    SInt16 id = 0;
    UInt8 attributes = 0;
    std::optional<std::string> name;
    bool isNameLost = false;             ///< the fork says that it has one, and ends before it
    std::optional<std::uint64_t> place;  ///< of its length word in the fork; none: never written
    Handle handle = nullptr;             ///< given out for it

    bool isChanged() const;
    bool isProtected() const;
    /// Changed; but one that was protected since keeps what the file has of it.
    bool isToBeWritten() const;
};

class ResourceMap {
  public:
    struct Type {
        ResType code = 0;
        std::vector<std::unique_ptr<Resource>> resources;  ///< at least one
    };

    explicit ResourceMap(const ResourceFork& fork);

    UInt16 attributes = 0;

    std::span<const Type> types() const { return types_; }
    const Type* findType(ResType code) const;
    // The first match; null when there is none.
    Resource* find(ResType type, SInt16 id) const;
    Resource* find(ResType type, std::string_view name) const;

    /// The last of its type, and the type the last if it is new.
    Resource& add(std::unique_ptr<Resource> resource);
    void remove(const Resource& resource);
    /// Whether a map can hold one more with a name of that length.
    bool hasRoomFor(ResType type, std::size_t nameLength) const;

  private:
    template <typename Matches>
    Resource* firstOf(ResType type, Matches matches) const;

    std::vector<Type> types_;
};

}  // namespace osa
