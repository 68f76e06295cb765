// One open resource file and the handles given out for its resources.
#pragma once

#include <CoreServices/MacTypes.h>

#include <memory>
#include <vector>

#include "platform/files/ReferenceNumbers.h"
#include "platform/resources/ResourceFork.h"

namespace osa {

class OpenResourceFile : public OpenFile {
  public:
    static constexpr Kind kKind = Kind::resourceFile;
    explicit OpenResourceFile(ResourceFork fork) : OpenFile(kKind), fork_(std::move(fork)) {}
    /// Disposes of the handles that still belong to the file.
    ~OpenResourceFile() override;
    OpenResourceFile(const OpenResourceFile&) = delete;
    OpenResourceFile& operator=(const OpenResourceFile&) = delete;

    const ResourceFork& fork() const { return fork_; }
    SInt16 number() const { return number_; }
    void setNumber(SInt16 number) { number_ = number; }

    /// The handle of `reference`, which is one of the fork's: the one given out before, else a new
    /// one. Its data is read if `load` and it is not there yet.
    Result<Handle> get(const ResourceReference& reference, bool load);
    /// Reads the data into `handle`, a handle of this file.
    Result<void> load(Handle handle);
    /// The reference behind a handle of this file; null when it is none.
    const ResourceReference* find(Handle handle) const;
    /// Forgets the handle, which the caller now owns; false when it is none of this file.
    bool detach(Handle handle);

  private:
    struct IndexedHandle {
        Handle handle;
        std::size_t index;
    };
    std::size_t indexOf(const ResourceReference& reference) const {
        return static_cast<std::size_t>(&reference - fork_.references().data());
    }
    /// The end for a handle that is none of this file.
    std::vector<IndexedHandle>::const_iterator entryOf(Handle handle) const;
    Result<void> read(const ResourceReference& reference, Handle handle) const;

    ResourceFork fork_;
    SInt16 number_ = 0;
    std::vector<Handle> handles_;  // by reference; as long as the references from the first use on
    std::vector<IndexedHandle> indexes_;  // the way back, in the order of the handles
};

/// The data of a resource as its users see it: expanded when it is stored compressed.
Result<std::vector<std::byte>> resourceData(const ResourceFork& fork,
                                            const ResourceReference& reference);

}  // namespace osa
