// Changing the map of an open file, and writing it.
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>
#include <CoreServices/Resources.h>

#include <algorithm>

#include "platform/resources/OpenResourceFile.h"
#include "platform/resources/ResourceDecompression.h"

namespace osa {
namespace {

/// What the handle of a changed resource holds; none when it was emptied since, so that only the
/// file has the data.
std::optional<ByteSpan> changedData(const Resource& resource) {
    const Handle handle = resource.handle;
    if (handle == nullptr || *handle == nullptr)
        return resource.place ? std::nullopt : std::optional(ByteSpan());
    return ByteSpan(reinterpret_cast<const std::byte*>(*handle),
                    static_cast<std::size_t>(GetHandleSize(handle)));
}

struct Outgoing {
    Resource* resource;
    UInt8 clearedAttributes;
};

UInt8 attributesCleared(bool isSaved, bool isDataNew) {
    return static_cast<UInt8>((isSaved ? resChanged : 0) | (isDataNew ? kResourceCompressed : 0));
}

}  // namespace

Result<void> OpenResourceFile::mayChange() const {
    if ((mapAttributes() & mapReadOnly) != 0) return Failure(wrPermErr);
    return {};
}

UInt16 OpenResourceFile::mapAttributes() const {
    const int fixed = place_ == nullptr ? mapReadOnly : 0;
    return static_cast<UInt16>(map_.attributes | fixed);
}

void OpenResourceFile::markChanged(int mapAttributes) {
    map_.attributes = static_cast<UInt16>(map_.attributes | mapAttributes);
}

Result<void> OpenResourceFile::add(Handle handle, std::unique_ptr<Resource> resource) {
    const std::size_t nameLength = resource->name ? resource->name->size() : 0;
    if (!map_.hasRoomFor(resource->type, nameLength)) return Failure(addResFailed);
    indexes_.reserve(indexes_.size() + 1);  // nothing fails once the map has it
    index(handle, map_.add(std::move(resource)));
    markChanged(mapChanged);
    return {};
}

void OpenResourceFile::remove(Handle handle) {
    Resource* const resource = find(handle);
    detach(handle);
    map_.remove(*resource);
    markChanged(mapChanged | mapCompact);
}

bool OpenResourceFile::isChanged() const {
    if ((map_.attributes & (mapChanged | mapCompact)) != 0) return true;
    return std::ranges::any_of(map_.types(), [](const ResourceMap::Type& type) {
        return std::ranges::any_of(type.resources,
                                   [](const auto& each) { return each->isToBeWritten(); });
    });
}

Result<void> OpenResourceFile::update() {
    if (!mayChange().ok() || !isChanged()) return {};
    return writeFork(nullptr);
}

Result<void> OpenResourceFile::write(const Resource& resource) {
    if (!mayChange().ok() || !resource.isToBeWritten()) return {};
    return writeFork(&resource);
}

Result<void> OpenResourceFile::flush() {
    if (place_ == nullptr) return {};
    return place_->flush();
}

/// Until the place has taken the fork nothing in memory changes; from then on nothing fails.
Result<void> OpenResourceFile::writeFork(const Resource* only) {
    ForkLayout layout(source_, reservedLength_);
    std::vector<Outgoing> outgoing;
    bool isComplete = true;
    for (const ResourceMap::Type& type : map_.types()) {
        for (const auto& each : type.resources) {
            const bool isDue = each->isToBeWritten();
            const bool isWritten = isDue && (only == nullptr || each.get() == only);
            isComplete = isComplete && isWritten == isDue;
            if (!isWritten && !each->place) continue;
            const auto data = isWritten ? changedData(*each) : std::nullopt;
            OSA_CHECK(layout.add(*each, data));
            outgoing.push_back({each.get(), attributesCleared(isWritten, data.has_value())});
        }
    }
    constexpr int kUnsaved = mapChanged | mapCompact;
    OSA_TRY(const ForkImage image, layout.finish(static_cast<UInt16>(map_.attributes & ~kUnsaved)));
    OSA_TRY(ForkPlace::Content content, place_->write(image));

    source_ = std::move(content.source);
    reservedLength_ = kForkHeadLength - ForkImage::kHeaderLength;
    for (std::size_t i = 0; i < outgoing.size(); ++i) {
        Resource& written = *outgoing[i].resource;
        written.place = content.dataStart + layout.offset(i);
        written.attributes &= static_cast<UInt8>(~outgoing[i].clearedAttributes);
    }
    if (isComplete) map_.attributes = static_cast<UInt16>(map_.attributes & ~kUnsaved);
    return {};
}

}  // namespace osa
