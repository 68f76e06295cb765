// Changing the holders of an object's parts.
#include "platform/files/stores/PartHolders.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>

#include "platform/files/formats/AppleDouble.h"
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

Result<void> mayHaveSideFile(const Located& object) {
    const std::string path = joinPath(object.folder(), "._", object.name());
    const auto named = posix::status(path, posix::Follow::no);
    if (named.status() == fnfErr) return {};
    OSA_CHECK(named);
    const auto file = posix::openFile(path, posix::Follow::yes);
    const bool isOther = file.status() == fnfErr || file.status() == notAFileErr;
    if (isOther) return Failure(dupFNErr);
    OSA_CHECK(file);
    if ((*file)->size() == 0) return {};
    const auto parsed = AppleDouble::parse(*file);
    if (parsed.status() == paramErr) return Failure(dupFNErr);
    OSA_CHECK(parsed);
    return {};
}

PartChanges::~PartChanges() {
    while (done_ > 0) undo(steps_[--done_]);
    forgetLastObject();
}

void PartChanges::keep() {
    steps_.clear();
    done_ = 0;
}

Result<void> PartChanges::run(Step& step) {
    if (step.file != nullptr) return step.file->takePlace();
    return step.value ? posix::setAttribute(step.path, step.attribute, *step.value)
                      : posix::removeAttribute(step.path, step.attribute);
}

void PartChanges::undo(Step& step) {
    if (step.file != nullptr) return step.file->giveBack();
    posix::putBackAttribute(step.path, step.attribute, step.old);
}

Result<void> PartChanges::carryOut() {
    forgetLastObject();
    for (; done_ < steps_.size(); ++done_) {
        const auto ran = run(steps_[done_]);
        if (ran.ok()) continue;
        steps_.erase(steps_.begin() + static_cast<std::ptrdiff_t>(done_), steps_.end());
        return ran;
    }
    return {};
}

Result<void> PartChanges::change(const PartHolder& holder, const HolderEdit& edit) {
    if (holder.attribute != nullptr) return changeAttribute(holder, edit);
    // A link to a side file stays one.
    OSA_TRY(const std::string target, posix::realPath(holder.path));
    // What is bare says nothing of itself: where a link has come to be, it may be anything.
    const bool isBare = holder.form == PartPlace::Form::bare;
    if (isBare && target != holder.path) return Failure(dupFNErr);
    return changeFile(target, edit);
}

/// The next change of the same file starts from what this one made of it.
Result<void> PartChanges::finishWith(const std::string& path) {
    const bool isWaiting = std::any_of(
        steps_.begin() + static_cast<std::ptrdiff_t>(done_), steps_.end(),
        [&](const Step& step) { return step.file != nullptr && step.file->path() == path; });
    return isWaiting ? carryOut() : Result<void>();
}

Result<void> PartChanges::changeFile(const std::string& path, const HolderEdit& edit) {
    OSA_CHECK(finishWith(path));
    OSA_TRY(const auto file, posix::openFile(path, posix::Follow::no));
    OSA_TRY(const ForkSource content, edit(file));
    Step step;
    OSA_TRY(step.file, posix::FileReplacement::prepare(path, *content, file->status()));
    steps_.push_back(std::move(step));
    return {};
}

Result<void> PartChanges::changeAttribute(const PartHolder& holder, const HolderEdit& edit) {
    Step step;
    step.path = holder.path;
    step.attribute = holder.attribute;
    OSA_TRY(step.old, posix::attribute(holder.path, holder.attribute));
    OSA_TRY(const ForkSource content, edit(std::make_shared<MemorySource>(ByteSpan(step.old))));
    if (content->size() > posix::kLargestAttribute) return Failure(dskFulErr);
    step.value.emplace(content->size());
    OSA_CHECK(content->readExactly(0, *step.value));
    steps_.push_back(std::move(step));
    return {};
}

Result<void> PartChanges::removeAttribute(const PartHolder& holder) {
    Step step;
    step.path = holder.path;
    step.attribute = holder.attribute;
    OSA_TRY(step.old, posix::attribute(holder.path, holder.attribute));
    steps_.push_back(std::move(step));
    return {};
}

Result<void> PartChanges::changeSideFile(const Located& object, const HolderEdit& edit,
                                         const std::function<ForkSource()>& fresh) {
    const std::string path = joinPath(object.folder(), "._", object.name());
    posix::FileStatus like = object.status;
    like.mode = (like.mode & 0666) | 0600;
    const auto there = posix::openFile(path, posix::Follow::no);
    if (there.status() == fnfErr) {
        Step step;
        OSA_TRY(step.file, posix::FileReplacement::prepareNew(path, *fresh(), like));
        steps_.push_back(std::move(step));
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

}  // namespace osa
