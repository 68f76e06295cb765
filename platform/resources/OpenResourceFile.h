// One open resource file: its map, the handles given out for its resources, and writing it.
#pragma once

#include <CoreServices/MacTypes.h>

#include <memory>
#include <vector>

#include "platform/files/ReferenceNumbers.h"
#include "platform/resources/ForkPlace.h"
#include "platform/resources/ResourceMap.h"

namespace osa {

class OpenResourceFile : public OpenFile {
  public:
    static constexpr Kind kKind = Kind::resourceFile;
    /// For reading when there is no `place`.
    explicit OpenResourceFile(const ResourceFork& fork, std::unique_ptr<ForkPlace> place = nullptr);
    /// Disposes of the handles that still belong to the file.
    ~OpenResourceFile() override;
    OpenResourceFile(const OpenResourceFile&) = delete;
    OpenResourceFile& operator=(const OpenResourceFile&) = delete;

    const ResourceMap& map() const { return map_; }
    /// Whether this is where `file` keeps its fork, and open for writing.
    bool writesTo(const Located& file, ForkKind fork) const {
        return place_ != nullptr && place_->isOf(file, fork);
    }
    SInt16 number() const { return number_; }
    void setNumber(SInt16 number) { number_ = number; }

    /// The handle of a resource of this file: the one given out before, else a new one. Its data is
    /// read if `load` and it is not there yet.
    Result<Handle> get(Resource& resource, bool load);
    /// Reads the data into `handle`, a handle of this file.
    Result<void> load(Handle handle);
    /// The resource behind a handle of this file; null when it is none.
    Resource* find(Handle handle) const;
    /// Forgets the handle, which the caller now owns; false when it is none of this file.
    bool detach(Handle handle);
    /// Where the stored bytes are that load() reads.
    Result<CheckedRange> storedData(const Resource& resource) const {
        return loadableRange(*source_, *resource.place);
    }

    /// wrPermErr when the map must not be changed.
    Result<void> mayChange() const;
    UInt16 mapAttributes() const;
    void setMapAttributes(UInt16 attributes) { map_.attributes = attributes; }
    void markChanged(int mapAttributes);
    /// addResFailed: no room in the map. The handle is the file's then.
    Result<void> add(Handle handle, std::unique_ptr<Resource> resource);
    /// The handle is the caller's then.
    void remove(Handle handle);

    /// Writes all changes, if there are any.
    Result<void> update();
    /// Writes the map, and of the changed data only that of `resource`; resources that were never
    /// written are left out.
    Result<void> write(const Resource& resource);
    Result<void> flush() override;

  private:
    struct IndexedHandle {
        Handle handle;
        Resource* resource;
    };
    /// The end for a handle that is none of this file.
    std::vector<IndexedHandle>::const_iterator entryOf(Handle handle) const;
    void index(Handle handle, Resource& resource);
    Result<void> read(const Resource& resource, Handle handle) const;
    bool isChanged() const;
    Result<void> writeFork(const Resource* only);

    std::shared_ptr<const ByteSource> source_;
    std::uint64_t reservedLength_;
    ResourceMap map_;
    std::unique_ptr<ForkPlace> place_;  // null: read only
    SInt16 number_ = 0;
    std::vector<IndexedHandle> indexes_;  // in the order of the handles
};

/// The data of a resource as its users see it: expanded when it is stored compressed.
Result<std::vector<std::byte>> resourceData(const ResourceFork& fork,
                                            const ResourceReference& reference);

}  // namespace osa
