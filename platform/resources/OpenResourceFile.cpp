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

OpenResourceFile::~OpenResourceFile() {
    for (const auto& [handle, index] : indexes_) DisposeHandle(handle);
}

Result<Handle> OpenResourceFile::get(const ResourceReference& reference, bool load) {
    const std::size_t index = indexOf(reference);
    if (index < handles_.size() && handles_[index] != nullptr) {
        const Handle known = handles_[index];
        if (load && *known == nullptr) OSA_CHECK(read(reference, known));
        return known;
    }
    handles_.resize(fork_.references().size());
    const Handle handle = NewEmptyHandle();
    if (handle == nullptr) return Failure(memFullErr);
    if (load) {
        if (const auto done = read(reference, handle); !done) {
            DisposeHandle(handle);
            return Failure(done.status());
        }
    }
    HSetRBit(handle);
    indexes_.insert(std::ranges::upper_bound(indexes_, handle, {}, &IndexedHandle::handle),
                    {handle, index});
    return handles_[index] = handle;
}

Result<void> OpenResourceFile::load(Handle handle) {
    const ResourceReference* const reference = find(handle);
    if (reference == nullptr) return Failure(resNotFound);
    if (*handle != nullptr) return {};
    return read(*reference, handle);
}

std::vector<OpenResourceFile::IndexedHandle>::const_iterator OpenResourceFile::entryOf(
    Handle handle) const {
    const auto entry = std::ranges::lower_bound(indexes_, handle, {}, &IndexedHandle::handle);
    return entry != indexes_.end() && entry->handle == handle ? entry : indexes_.end();
}

const ResourceReference* OpenResourceFile::find(Handle handle) const {
    const auto entry = entryOf(handle);
    return entry == indexes_.end() ? nullptr : &fork_.references()[entry->index];
}

bool OpenResourceFile::detach(Handle handle) {
    const auto entry = entryOf(handle);
    if (entry == indexes_.end()) return false;
    handles_[entry->index] = nullptr;
    indexes_.erase(entry);
    HClrRBit(handle);
    return true;
}

/// Plain data goes from the fork into the block without a copy between. On failure the handle is
/// empty.
Result<void> OpenResourceFile::read(const ResourceReference& reference, Handle handle) const {
    OSA_TRY(const CheckedRange range, fork_.dataRange(reference));
    OSA_CHECK(resize(handle, range.length));
    const auto fill = [&]() -> Result<void> {
        const std::span<std::byte> stored = block(handle, range.length);
        OSA_CHECK(fork_.source().readExactly(range.offset, stored));
        if ((reference.attributes & kResourceCompressed) == 0 || !isCompressedData(stored))
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
