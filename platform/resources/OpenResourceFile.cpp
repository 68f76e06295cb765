// Giving out handles and filling them.
#include "platform/resources/OpenResourceFile.h"

#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <algorithm>
#include <span>

#include "platform/resources/ResourceDecompression.h"

namespace osa {
namespace {

Result<void> resize(Handle handle, std::uint64_t size) {
    ReallocateHandle(handle, static_cast<Size>(size));
    if (const OSErr error = MemError(); error != noErr) return Failure(error);
    return {};
}

std::span<std::byte> block(Handle handle, std::uint64_t size) {
    return {reinterpret_cast<std::byte*>(*handle), static_cast<std::size_t>(size)};
}

}  // namespace

OpenResourceFile::OpenResourceFile(const ResourceFork& fork, std::unique_ptr<ForkPlace> place)
    : OpenFile(kKind),
      source_(fork.sharedSource()),
      reservedLength_(fork.reservedLength()),
      map_(fork),
      place_(std::move(place)) {}

OpenResourceFile::~OpenResourceFile() {
    for (const auto& [handle, resource] : indexes_) DisposeHandle(handle);
}

Result<Handle> OpenResourceFile::get(Resource& resource, bool load) {
    if (resource.handle != nullptr) {
        if (load && *resource.handle == nullptr) OSA_CHECK(read(resource, resource.handle));
        return resource.handle;
    }
    const Handle handle = NewEmptyHandle();
    if (handle == nullptr) return Failure(memFullErr);
    if (load) {
        if (const auto done = read(resource, handle); !done) {
            DisposeHandle(handle);
            return Failure(done.status());
        }
    }
    index(handle, resource);
    return handle;
}

void OpenResourceFile::index(Handle handle, Resource& resource) {
    indexes_.insert(std::ranges::upper_bound(indexes_, handle, {}, &IndexedHandle::handle),
                    {handle, &resource});
    resource.handle = handle;
    HSetRBit(handle);
}

Result<void> OpenResourceFile::load(Handle handle) {
    const Resource* const resource = find(handle);
    if (resource == nullptr) return Failure(resNotFound);
    if (*handle != nullptr) return {};
    return read(*resource, handle);
}

std::vector<OpenResourceFile::IndexedHandle>::const_iterator OpenResourceFile::entryOf(
    Handle handle) const {
    const auto entry = std::ranges::lower_bound(indexes_, handle, {}, &IndexedHandle::handle);
    return entry != indexes_.end() && entry->handle == handle ? entry : indexes_.end();
}

Resource* OpenResourceFile::find(Handle handle) const {
    const auto entry = entryOf(handle);
    return entry == indexes_.end() ? nullptr : entry->resource;
}

bool OpenResourceFile::detach(Handle handle) {
    const auto entry = entryOf(handle);
    if (entry == indexes_.end()) return false;
    entry->resource->handle = nullptr;
    indexes_.erase(entry);
    HClrRBit(handle);
    return true;
}

/// Plain data goes from the fork into the block without a copy between. On failure the handle is
/// empty.
Result<void> OpenResourceFile::read(const Resource& resource, Handle handle) const {
    if (!resource.place) return {};  // emptied by its owner before it was written
    OSA_TRY(const CheckedRange range, storedData(resource));
    OSA_CHECK(resize(handle, range.length));
    const auto fill = [&]() -> Result<void> {
        const std::span<std::byte> stored = block(handle, range.length);
        OSA_CHECK(source_->readExactly(range.offset, stored));
        if ((resource.attributes & kResourceCompressed) == 0 || !isCompressedData(stored))
            return {};
        OSA_TRY(const std::vector<std::byte> data, expandResource(stored));
        OSA_CHECK(resize(handle, data.size()));
        std::copy_n(data.data(), data.size(), block(handle, data.size()).data());
        return {};
    };
    const Result<void> filled = fill();
    if (!filled) EmptyHandle(handle);
    return filled;
}

Result<std::vector<std::byte>> resourceData(const ResourceFork& fork,
                                            const ResourceReference& reference) {
    OSA_TRY(const CheckedRange range, fork.dataRange(reference));
    std::vector<std::byte> stored(range.length);
    OSA_CHECK(fork.source().readExactly(range.offset, stored));
    if ((reference.attributes & kResourceCompressed) == 0 || !isCompressedData(stored))
        return stored;
    return expandResource(stored);
}

}  // namespace osa
