// Changing the holders of an object's parts.
#include "platform/files/stores/PartHolders.h"

#include <CoreServices/MacErrors.h>

#include <new>

#include "platform/files/stores/ForkProbe.h"
#include "platform/posix/CatalogChanges.h"

namespace osa {

Result<std::vector<PartHolder>> partHolders(const Located& object, Part part) {
    OSA_TRY(const auto stores, askEveryStore(object));
    std::vector<PartHolder> holders;
    for (const StoredParts* const parts : stores) {
        const bool isInfo = part == Part::finderInfo;
        for (const PartPlace& place : isInfo ? parts->infoPlaces : parts->forkPlaces) {
            const bool isInFile = place.attribute == nullptr;
            holders.push_back({isInFile ? parts->witnesses[place.witness].path : object.path(),
                               place.attribute, place.form, place.isBlank});
        }
    }
    return holders;
}

PartChanges::~PartChanges() {
    for (auto change = done_.rbegin(); change != done_.rend(); ++change) {
        try {
            undo(*change);
        } catch (const std::bad_alloc&) {
            continue;  // as when the system refuses
        }
    }
}

void PartChanges::undo(const Done& change) {
    if (change.old == nullptr) {
        posix::discard(change.path);
    } else if (change.attribute == nullptr) {
        (void)posix::replaceFile(change.path, *change.old, change.status);
    } else {
        (void)posix::setAttribute(change.path, change.attribute, change.old->inMemory());
    }
}

Result<void> PartChanges::change(const PartHolder& holder, const HolderEdit& edit) {
    if (holder.attribute != nullptr) return changeAttribute(holder, edit);
    // A link to a side file stays one.
    OSA_TRY(const std::string target, posix::realPath(holder.path));
    return changeFile(target, edit);
}

Result<void> PartChanges::changeFile(const std::string& path, const HolderEdit& edit) {
    OSA_TRY(const auto file, posix::openFile(path, posix::Follow::no));
    OSA_TRY(const ForkSource content, edit(file));
    OSA_CHECK(posix::replaceFile(path, *content, file->status()));
    done_.push_back({path, nullptr, file, file->status()});
    return {};
}

Result<void> PartChanges::changeAttribute(const PartHolder& holder, const HolderEdit& edit) {
    OSA_TRY(auto value, posix::attribute(holder.path, holder.attribute));
    const auto old = std::make_shared<MemorySource>(std::move(value));
    OSA_TRY(const ForkSource content, edit(old));
    if (content->size() > posix::kLargestAttribute) return Failure(dskFulErr);
    OSA_TRY(const auto bytes, readRange(*content, {0, content->size()}));
    OSA_CHECK(posix::setAttribute(holder.path, holder.attribute, bytes));
    done_.push_back({holder.path, holder.attribute, old, {}});
    return {};
}

Result<void> PartChanges::removeAttribute(const PartHolder& holder) {
    OSA_TRY(auto value, posix::attribute(holder.path, holder.attribute));
    OSA_CHECK(posix::removeAttribute(holder.path, holder.attribute));
    done_.push_back(
        {holder.path, holder.attribute, std::make_shared<MemorySource>(std::move(value)), {}});
    return {};
}

Result<void> PartChanges::changeSideFile(const Located& object, const HolderEdit& edit,
                                         const std::function<ForkSource()>& fresh) {
    const std::string path = joinPath(object.folder(), "._", object.name());
    posix::FileStatus like = object.status;
    like.mode = (like.mode & 0666) | 0600;
    const auto there = posix::openFile(path, posix::Follow::no);
    if (there.status() == fnfErr) {
        OSA_CHECK(posix::createFileWith(path, *fresh(), like));
        done_.push_back({path, nullptr, nullptr, {}});
        return {};
    }
    if (!there.ok() && there.status() != notAFileErr) return Failure(there.status());
    // A link that leads to a side file stays one; any other is somebody else's.
    const auto target = there.ok() ? Result<std::string>(path) : posix::realPath(path);
    if (target.status() == fnfErr) return Failure(dupFNErr);
    OSA_CHECK(target);
    const HolderEdit editOrMake = [&](const ForkSource& old) -> Result<ForkSource> {
        return old->size() == 0 ? fresh() : edit(old);
    };
    const auto changed = changeFile(*target, editOrMake);
    // A file of this name that is something else is not ours to replace.
    const bool isForeign = changed.status() == paramErr || changed.status() == notAFileErr;
    return isForeign ? Failure(dupFNErr) : changed;
}

std::mutex& partsLock() {
    static std::mutex lock;
    return lock;
}

}  // namespace osa
