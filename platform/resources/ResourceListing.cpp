// Lists and extracts the resources of a file or of a container.
#include <CoreServices/Files.h>
#include <CoreServices/MacErrors.h>
#include <OSA/ResourceListing.h>

#include <array>
#include <cstring>
#include <new>

#include "platform/files/ForkContainer.h"
#include "platform/files/Forks.h"
#include "platform/posix/FileSystem.h"
#include "platform/resources/OpenResourceFile.h"
#include "platform/resources/ResourceDecompression.h"

using namespace osa;

struct OSAResourceList {
    explicit OSAResourceList(ResourceFork opened) : fork(std::move(opened)) {}
    ResourceFork fork;
};

namespace {

Result<std::shared_ptr<const ByteSource>> resourcesOf(const char* path) {
    FSRef ref{};
    const OSStatus found = FSPathMakeRef(reinterpret_cast<const UInt8*>(path), &ref, nullptr);
    if (found != noErr) return Failure(found);
    auto own = openForkForReading(ref, ForkKind::resource);
    if (own && (*own)->size() > 0) return own;
    if (!own && own.status() != errFSForkNotFound) return own;
    OSA_TRY(auto content, posix::openSource(path));
    OSA_TRY(const ForkContainer container, openForkContainer(std::move(content)));
    return container.resourceFork;
}

const ResourceReference* referenceAt(OSAResourceListRef list, CFIndex index) {
    if (list == nullptr || index < 0) return nullptr;
    const auto references = list->fork.references();
    const auto place = static_cast<std::size_t>(index);
    return place < references.size() ? &references[place] : nullptr;
}

/// The sizes and whether the data is compressed, from no more than its first bytes.
Result<void> measure(const ResourceFork& fork, const ResourceReference& reference,
                     OSAResourceInfo& info) {
    OSA_TRY(const CheckedRange range, fork.dataRange(reference));
    info.storedSize = info.size = static_cast<UInt32>(range.length);
    std::array<std::byte, 18> header{};
    if ((reference.attributes & kResourceCompressed) == 0 || range.length < header.size())
        return {};
    OSA_CHECK(fork.source().readExactly(range.offset, header));
    info.compressed = isCompressedData(header);
    if (info.compressed) info.size = expandedLength(header);
    return {};
}

Result<CFDataRef> copyData(const ResourceFork& fork, const ResourceReference& reference,
                           bool expand) {
    std::vector<std::byte> bytes;
    if (expand) {
        OSA_TRY(bytes, resourceData(fork, reference));
    } else {
        OSA_TRY(const CheckedRange range, fork.dataRange(reference));
        bytes.resize(range.length);
        OSA_CHECK(fork.source().readExactly(range.offset, bytes));
    }
    const CFDataRef data =
        CFDataCreate(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
                     static_cast<CFIndex>(bytes.size()));
    if (data == nullptr) return Failure(memFullErr);
    return data;
}

}  // namespace

OSStatus OSAResourceListOpen(const char* path, OSAResourceListRef* list) {
    if (list == nullptr || path == nullptr) return paramErr;
    *list = nullptr;
    try {
        auto source = resourcesOf(path);
        if (!source) return source.status();
        auto fork = ResourceFork::open(*std::move(source));
        if (!fork) return fork.status();
        *list = new OSAResourceList(*std::move(fork));
        return noErr;
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}

void OSAResourceListClose(OSAResourceListRef list) {
    delete list;
}

CFIndex OSAResourceListGetCount(OSAResourceListRef list) {
    return list == nullptr ? 0 : static_cast<CFIndex>(list->fork.references().size());
}

OSStatus OSAResourceListGetInfo(OSAResourceListRef list, CFIndex index, OSAResourceInfo* info) {
    const ResourceReference* const reference = referenceAt(list, index);
    if (reference == nullptr || info == nullptr) return paramErr;
    *info = {};
    info->type = reference->type;
    info->id = reference->id;
    info->attributes = reference->attributes;
    const auto name = list->fork.name(*reference);
    info->hasName = name.has_value();
    if (name) {
        info->name[0] = static_cast<unsigned char>(name->size());
        std::memcpy(info->name + 1, name->data(), name->size());
    }
    info->status = measure(list->fork, *reference, *info).status();
    return noErr;
}

OSStatus OSAResourceListCopyData(OSAResourceListRef list, CFIndex index, Boolean expand,
                                 CFDataRef* data) {
    const ResourceReference* const reference = referenceAt(list, index);
    if (reference == nullptr || data == nullptr) return paramErr;
    *data = nullptr;
    try {
        const auto copied = copyData(list->fork, *reference, expand != 0);
        if (copied) *data = *copied;
        return copied.status();
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}
