// Finding, reading, releasing and asking about resources.
#include <CoreServices/MacMemory.h>
#include <CoreServices/Resources.h>

#include <algorithm>
#include <limits>
#include <set>
#include <string_view>

#include "platform/resources/ResourceThread.h"

using namespace osa;

namespace {

SInt16 limitedCount(std::size_t count) {
    return static_cast<SInt16>(std::min<std::size_t>(count, 0x7FFF));
}

/// The handle of what `find`, given the current file's map, points at.
template <typename Find>
Handle getFromCurrent(Find&& find) {
    return resourceCall<Handle>(nullptr, [&](ResourceThread& thread) -> Result<Handle> {
        const OpenResourceFilePtr file = thread.current();
        Resource* const resource = file ? find(file->map()) : nullptr;
        if (resource == nullptr) return Failure(resNotFound);
        return file->get(*resource, thread.loads);
    });
}

}  // namespace

ResourceCount Count1Types() {
    return resourceCall<SInt16>(0, [](ResourceThread& thread) -> Result<SInt16> {
        const OpenResourceFilePtr file = thread.current();
        return file ? limitedCount(file->map().types().size()) : SInt16{0};
    });
}

void Get1IndType(ResType* type, ResourceIndex index) {
    resourceCall([&](ResourceThread& thread) -> Result<void> {
        if (type == nullptr) return Failure(paramErr);
        *type = 0;
        const OpenResourceFilePtr file = thread.current();
        if (!file || index < 1 || static_cast<std::size_t>(index) > file->map().types().size())
            return Failure(resNotFound);
        *type = file->map().types()[static_cast<std::size_t>(index) - 1].code;
        return {};
    });
}

ResourceCount Count1Resources(ResType type) {
    return resourceCall<SInt16>(0, [&](ResourceThread& thread) -> Result<SInt16> {
        const OpenResourceFilePtr file = thread.current();
        const ResourceMap::Type* const entry = file ? file->map().findType(type) : nullptr;
        return entry == nullptr ? SInt16{0} : limitedCount(entry->resources.size());
    });
}

Handle Get1Resource(ResType type, ResID id) {
    return getFromCurrent([&](const ResourceMap& map) { return map.find(type, id); });
}

Handle Get1NamedResource(ResType type, ConstStr255Param name) {
    return getFromCurrent([&](const ResourceMap& map) -> Resource* {
        if (name == nullptr) return nullptr;
        const auto* const text = reinterpret_cast<const char*>(name + 1);
        return map.find(type, std::string_view(text, name[0]));
    });
}

Handle Get1IndResource(ResType type, ResourceIndex index) {
    return getFromCurrent([&](const ResourceMap& map) -> Resource* {
        const ResourceMap::Type* const entry = map.findType(type);
        if (entry == nullptr || index < 1 ||
            static_cast<std::size_t>(index) > entry->resources.size())
            return nullptr;
        return entry->resources[static_cast<std::size_t>(index) - 1].get();
    });
}

Handle GetResource(ResType type, ResID id) {
    return resourceCall<Handle>(nullptr, [&](ResourceThread& thread) -> Result<Handle> {
        const std::vector<OpenResourceFilePtr> chain = thread.chain();
        for (auto file = std::ranges::find(chain, thread.current()); file != chain.end(); ++file)
            if (Resource* const resource = (*file)->map().find(type, id))
                return (*file)->get(*resource, thread.loads);
        return Failure(resNotFound);
    });
}

void LoadResource(Handle resource) {
    resourceCall([&](ResourceThread& thread) {
        return withResource(thread, resource, [&](OpenResourceFile& file, const Resource&) {
            return file.load(resource);
        });
    });
}

void DetachResource(Handle resource) {
    resourceCall([&](ResourceThread& thread) {
        return withResource(thread, resource,
                            [&](OpenResourceFile& file, const Resource& found) -> Result<void> {
                                if (found.isChanged()) return Failure(resAttrErr);
                                file.detach(resource);
                                return {};
                            });
    });
}

void ReleaseResource(Handle resource) {
    DetachResource(resource);
    if (ResError() == noErr) DisposeHandle(resource);
    if (ResError() == resAttrErr) ResourceThread::mine().error = noErr;
}

ResAttributes GetResAttrs(Handle resource) {
    return resourceCall<SInt16>(0, [&](ResourceThread& thread) {
        return withResource(thread, resource,
                            [](OpenResourceFile&, const Resource& found) -> Result<SInt16> {
                                return SInt16{found.attributes};
                            });
    });
}

void GetResInfo(Handle resource, ResID* id, ResType* type, Str255 name) {
    resourceCall([&](ResourceThread& thread) {
        return withResource(thread, resource,
                            [&](OpenResourceFile&, const Resource& found) -> Result<void> {
                                if (id != nullptr) *id = found.id;
                                if (type != nullptr) *type = found.type;
                                if (name == nullptr) return {};
                                const std::string_view text =
                                    found.name ? std::string_view(*found.name) : std::string_view();
                                name[0] = static_cast<unsigned char>(text.size());
                                std::copy(text.begin(), text.end(), name + 1);
                                return {};
                            });
    });
}

SInt32 GetResourceSizeOnDisk(Handle resource) {
    return resourceCall<SInt32>(-1, [&](ResourceThread& thread) {
        return withResource(thread, resource,
                            [](OpenResourceFile& file, const Resource& found) -> Result<SInt32> {
                                if (!found.place) return SInt32{0};
                                OSA_TRY(const CheckedRange range, file.storedData(found));
                                return static_cast<SInt32>(range.length);
                            });
    });
}

ResID Unique1ID(ResType type) {
    return resourceCall<ResID>(0, [&](ResourceThread& thread) -> Result<ResID> {
        const OpenResourceFilePtr file = thread.current();
        if (!file) return Failure(resFNotFound);
        std::set<ResID> taken;
        if (const ResourceMap::Type* const entry = file->map().findType(type)) {
            for (const auto& each : entry->resources) taken.insert(each->id);
        }
        // Lower ids belong to the system.
        for (int id = 128; id <= std::numeric_limits<ResID>::max(); ++id) {
            if (!taken.contains(static_cast<ResID>(id))) return static_cast<ResID>(id);
        }
        return Failure(addResFailed);
    });
}
