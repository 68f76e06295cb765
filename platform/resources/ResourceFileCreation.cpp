// FSCreateResFile.
#include <CoreServices/MacErrors.h>
#include <CoreServices/Resources.h>

#include "platform/base/ByteWriter.h"
#include "platform/files/FileCreation.h"
#include "platform/files/stores/ResourceForkWriter.h"
#include "platform/resources/ResourceThread.h"

namespace osa {
namespace {

/// A fork whose map has no types.
std::vector<std::byte> emptyFork() {
    constexpr std::uint32_t kDataStart = 256;
    constexpr std::uint16_t kTypeList = 28;
    constexpr std::uint16_t kMapLength = 30;
    ByteWriter fork;
    const auto putHeader = [&] { fork.u32(kDataStart).u32(kDataStart).u32(0).u32(kMapLength); };
    putHeader();
    fork.fill(kDataStart - fork.size());
    putHeader();
    fork.fill(8);  // next map, file number and attributes, used in memory
    fork.u16(kTypeList).u16(kMapLength).u16(0xFFFF);
    return fork.take();
}

/// A side file that was left over is not this file's.
Result<void> finishNewFile(const FSRef& file) {
    return createResourceFork(file, emptyFork(), OldFork::replaced);
}

/// An existing file gets a fork when it has none.
Result<void> createResourceFile(const NewFile& file, FSRef& made) {
    const auto created = createFile(file, finishNewFile);
    if (created.ok()) made = *created;
    if (created.status() != dupFNErr) {
        OSA_CHECK(created);
        return {};
    }
    if (const OSErr status = FSMakeFSRefUnicode(file.parent, file.nameLength, file.name, 0, &made))
        return Failure(status);
    const auto added = createResourceFork(made, emptyFork(), OldFork::kept);
    return added.status() == notAFileErr ? Failure(dupFNErr) : added;
}

}  // namespace
}  // namespace osa

void FSCreateResFile(const FSRef* parentRef, UniCharCount nameLength, const UniChar* name,
                     FSCatalogInfoBitmap whichInfo, const FSCatalogInfo* catalogInfo, FSRef* newRef,
                     FSSpec* newSpec) {
    osa::resourceCall([&](osa::ResourceThread&) -> osa::Result<void> {
        FSRef made{};
        const auto created =
            osa::createResourceFile({parentRef, name, nameLength, whichInfo, catalogInfo}, made);
        if (!created.ok() && created.status() != dupFNErr) return created;
        if (newRef != nullptr) *newRef = made;
        if (newSpec == nullptr) return created;
        const OSErr status = FSGetCatalogInfo(&made, 0, nullptr, nullptr, newSpec, nullptr);
        return created.ok() && status != noErr ? osa::Failure(status) : created;
    });
}
