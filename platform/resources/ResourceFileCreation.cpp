// Making resource files.
#include <CoreServices/MacErrors.h>
#include <CoreServices/Resources.h>

#include "platform/files/FileCreation.h"
#include "platform/files/FileSpecs.h"
#include "platform/files/stores/ResourceForkWriter.h"
#include "platform/resources/ForkPlace.h"
#include "platform/resources/ResourceThread.h"

namespace osa {
namespace {

/// Without resources.
Result<ForkImage> emptyFork() {
    return ForkLayout(std::make_shared<MemorySource>(ByteSpan()), 0).finish(0);
}

Result<void> giveResourceFork(const FSRef& file, OldFork old) {
    OSA_TRY(const ForkImage empty, emptyFork());
    const auto fork = empty.fork();
    OSA_TRY(const RangeBytes bytes, readRange(*fork, {0, fork->size()}));
    return createResourceFork(file, bytes, old);
}

/// A side file that was left over is not this file's.
Result<void> finishWithResourceFork(const FSRef& file) {
    return giveResourceFork(file, OldFork::replaced);
}

Result<void> giveDataFork(const FSRef& file) {
    OSA_TRY(const ForkImage empty, emptyFork());
    return createDataForkMap(file, empty);
}

/// An existing file gets a map when the fork is empty.
Result<void> createResourceFile(const NewFile& file, ForkKind fork, FSRef& made) {
    const bool isData = fork == ForkKind::data;
    const auto created = createFile(file, isData ? giveDataFork : finishWithResourceFork);
    if (created.ok()) made = *created;
    if (created.status() != dupFNErr) {
        OSA_CHECK(created);
        return {};
    }
    if (const OSErr status = FSMakeFSRefUnicode(file.parent, file.nameLength, file.name, 0, &made))
        return Failure(status);
    const auto added = isData ? giveDataFork(made) : giveResourceFork(made, OldFork::kept);
    return added.status() == notAFileErr ? Failure(dupFNErr) : added;
}

struct MadeFile {
    FSRef* reference;  // either may be null
    FSSpec* newSpec;
};

Result<void> create(const NewFile& file, ForkKind fork, const MadeFile& wanted) {
    FSRef made{};
    const auto created = createResourceFile(file, fork, made);
    if (!created.ok() && created.status() != dupFNErr) return created;
    if (wanted.reference != nullptr) *wanted.reference = made;
    if (wanted.newSpec == nullptr) return created;
    const OSErr status = FSGetCatalogInfo(&made, 0, nullptr, nullptr, wanted.newSpec, nullptr);
    return created.ok() && status != noErr ? Failure(status) : created;
}

}  // namespace
}  // namespace osa

void FSCreateResFile(const FSRef* parentRef, UniCharCount nameLength, const UniChar* name,
                     FSCatalogInfoBitmap whichInfo, const FSCatalogInfo* catalogInfo, FSRef* newRef,
                     FSSpec* newSpec) {
    osa::resourceCall([&](osa::ResourceThread&) {
        return osa::create({parentRef, name, nameLength, whichInfo, catalogInfo},
                           osa::ForkKind::resource, {newRef, newSpec});
    });
}

OSErr FSCreateResourceFile(const FSRef* parentRef, UniCharCount nameLength, const UniChar* name,
                           FSCatalogInfoBitmap whichInfo, const FSCatalogInfo* catalogInfo,
                           UniCharCount forkNameLength, const UniChar* forkName, FSRef* newRef,
                           FSSpec* newSpec) {
    osa::resourceCall([&](osa::ResourceThread&) -> osa::Result<void> {
        OSA_TRY(const osa::ForkKind fork, osa::forkOfName(forkNameLength, forkName));
        return osa::create({parentRef, name, nameLength, whichInfo, catalogInfo}, fork,
                           {newRef, newSpec});
    });
    return ResError();
}

void FSpCreateResFile(const FSSpec* spec, OSType creator, OSType fileType, ScriptCode) {
    osa::resourceCall([&](osa::ResourceThread&) -> osa::Result<void> {
        if (spec == nullptr) return osa::Failure(paramErr);
        OSA_TRY(const osa::SpecPlace place, osa::placeOf(*spec));
        const FSCatalogInfo info = osa::catalogInfoOf(fileType, creator);
        return osa::create(
            {&place.parent, place.name.unicode, place.name.length, kFSCatInfoFinderInfo, &info},
            osa::ForkKind::resource, {nullptr, nullptr});
    });
}
