// Adding, changing, removing and writing single resources.
#include <CoreServices/MacMemory.h>
#include <CoreServices/Resources.h>

#include <string_view>

#include "platform/resources/ResourceDecompression.h"
#include "platform/resources/ResourceThread.h"

using namespace osa;

namespace {

/// None for a null or empty name.
std::optional<std::string> nameFrom(ConstStr255Param name) {
    if (name == nullptr || name[0] == 0) return std::nullopt;
    return std::string(reinterpret_cast<const char*>(name + 1), name[0]);
}

/// Runs `work` on the file and entry of a resource whose map may be changed.
template <typename Work>
void change(Handle handle, Work&& work) {
    resourceCall([&](ResourceThread& thread) {
        return withResource(thread, handle,
                            [&](OpenResourceFile& file, Resource& resource) -> Result<void> {
                                OSA_CHECK(file.mayChange());
                                return work(file, resource);
                            });
    });
}

}  // namespace

void AddResource(Handle data, ResType type, ResID id, ConstStr255Param name) {
    resourceCall([&](ResourceThread& thread) -> Result<void> {
        const OpenResourceFilePtr file = thread.current();
        if (!file) return Failure(resFNotFound);
        OSA_CHECK(file->mayChange());
        if (data == nullptr || (HGetState(data) & kHandleResourceMask) != 0)
            return Failure(addResFailed);
        auto resource = std::make_unique<Resource>();
        resource->type = type;
        resource->id = id;
        resource->attributes = resChanged;
        resource->name = nameFrom(name);
        return file->add(data, std::move(resource));
    });
}

void ChangedResource(Handle resource) {
    change(resource, [](OpenResourceFile& file, Resource& changed) -> Result<void> {
        if (changed.isProtected()) return Failure(resAttrErr);
        changed.attributes |= resChanged;
        file.markChanged(mapChanged);
        return {};
    });
}

void RemoveResource(Handle resource) {
    change(resource, [&](OpenResourceFile& file, const Resource& removed) -> Result<void> {
        if (removed.isProtected()) return Failure(rmvResFailed);
        file.remove(resource);
        return {};
    });
}

void SetResAttrs(Handle resource, ResAttributes attributes) {
    change(resource, [&](OpenResourceFile&, Resource& changed) -> Result<void> {
        const int kept = changed.attributes & (kResourceCompressed | resChanged);
        changed.attributes = static_cast<UInt8>((attributes & ~kResourceCompressed) | kept);
        return {};
    });
}

void SetResInfo(Handle resource, ResID id, ConstStr255Param name) {
    change(resource, [&](OpenResourceFile& file, Resource& changed) -> Result<void> {
        if (changed.isProtected()) return Failure(resAttrErr);
        if (auto given = nameFrom(name)) {
            changed.name = std::move(given);
            changed.isNameLost = false;
        }
        changed.id = id;
        file.markChanged(mapChanged);
        return {};
    });
}

void WriteResource(Handle resource) {
    resourceCall([&](ResourceThread& thread) {
        return withResource(thread, resource, [](OpenResourceFile& file, const Resource& changed) {
            return file.write(changed);
        });
    });
}
