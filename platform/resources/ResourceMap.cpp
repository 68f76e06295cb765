// Finding, adding and removing the resources of an open file.
#include "platform/resources/ResourceMap.h"

#include <CoreServices/Resources.h>

#include <algorithm>

#include "platform/resources/ForkLayout.h"

namespace osa {

bool Resource::isChanged() const {
    return (attributes & resChanged) != 0;
}
bool Resource::isProtected() const {
    return (attributes & resProtected) != 0;
}
bool Resource::isToBeWritten() const {
    return isChanged() && !(isProtected() && place);
}

ResourceMap::ResourceMap(const ResourceFork& fork) : attributes(fork.mapAttributes()) {
    types_.reserve(fork.types().size());
    for (const ResourceFork::Type& type : fork.types()) {
        std::vector<std::unique_ptr<Resource>> resources;
        resources.reserve(type.count);
        for (const ResourceReference& reference : fork.references(type)) {
            auto resource = std::make_unique<Resource>();
            resource->type = type.code;
            resource->id = reference.id;
            // On disk the mark of changed data means nothing.
            resource->attributes = reference.attributes & static_cast<UInt8>(~resChanged);
            resource->name = fork.name(reference);
            resource->isNameLost = !resource->name && reference.nameOffset != kNoName;
            resource->place = fork.dataStart() + reference.dataOffset;
            resources.push_back(std::move(resource));
        }
        types_.push_back({type.code, std::move(resources)});
    }
}

const ResourceMap::Type* ResourceMap::findType(ResType code) const {
    const auto found = std::ranges::find(types_, code, &Type::code);
    return found == types_.end() ? nullptr : &*found;
}

template <typename Matches>
Resource* ResourceMap::firstOf(ResType type, Matches matches) const {
    const Type* const entry = findType(type);
    if (entry == nullptr) return nullptr;
    for (const auto& resource : entry->resources)
        if (matches(*resource)) return resource.get();
    return nullptr;
}

Resource* ResourceMap::find(ResType type, SInt16 id) const {
    return firstOf(type, [&](const Resource& resource) { return resource.id == id; });
}

Resource* ResourceMap::find(ResType type, std::string_view name) const {
    return firstOf(type, [&](const Resource& resource) {
        return resource.name && areEqualNames(*resource.name, name);
    });
}

Resource& ResourceMap::add(std::unique_ptr<Resource> resource) {
    Resource& added = *resource;
    auto type = std::ranges::find(types_, added.type, &Type::code);
    if (type != types_.end()) {
        type->resources.push_back(std::move(resource));
        return added;
    }
    std::vector<std::unique_ptr<Resource>> resources;
    resources.push_back(std::move(resource));
    types_.push_back({added.type, std::move(resources)});
    return added;
}

void ResourceMap::remove(const Resource& resource) {
    const auto type = std::ranges::find(types_, resource.type, &Type::code);
    std::erase_if(type->resources, [&](const auto& each) { return each.get() == &resource; });
    if (type->resources.empty()) types_.erase(type);
}

bool ResourceMap::hasRoomFor(ResType type, std::size_t nameLength) const {
    MapSize size;
    for (const Type& each : types_) {
        ++size.types;
        size.references += each.resources.size();
        for (const auto& resource : each.resources)
            if (resource->name) size.names += 1 + resource->name->size();
    }
    if (findType(type) == nullptr) ++size.types;
    ++size.references;
    if (nameLength > 0) size.names += 1 + nameLength;
    return size.isExpressible();
}

}  // namespace osa
