// FSRenameUnicode and FSMoveObject: an object gets another name or folder, and its side files with
// it.
//
// Each side file first gets its new name besides the old one, then the object goes, then the old
// names. So whoever looks in between, or after a crash, finds the object with all that belongs to
// it; what is too many then has a name that no walk over a folder shows. Where files cannot have
// two names they follow the object one by one, as the folders below __MACOSX do everywhere.
#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <new>

#include "platform/files/Names.h"
#include "platform/files/changes/NameSteps.h"
#include "platform/files/changes/SidePlaces.h"
#include "platform/files/forks/WriteAccess.h"
#include "platform/files/stores/ForkProbe.h"
#include "platform/posix/CatalogChanges.h"

namespace osa {
namespace {

std::string folderOf(const std::string& path) {
    return path.substr(0, std::max<std::size_t>(path.rfind('/'), 1));
}

/// Gives one side file its new name, and its old one up.
class SideMove {
  public:
    SideMove(const SideFile& file, const Located& to)
        : how_(file.how), from_(file.path), target_(file.pathFor(to.folder(), to.name())) {
        SideFile hidden = file;
        if (how_ == Keeping::percent) hidden.how = Keeping::dotUnderscore;
        interim_ = hidden.pathFor(to.folder(), to.name());
    }

    Result<void> prepare(NameSteps& steps, const Located& object) {
        OSA_CHECK(mayMove());
        OSA_CHECK(steps.makeFolder(folderOf(target_)));
        if (how_ == Keeping::percent) OSA_CHECK(hide(steps, object));
        if (how_ == Keeping::macosxFolder) return {};
        const auto added = steps.addName(from_, interim_);
        isAdded_ = added.ok();
        // Whatever else it is, the file may still be renamed.
        const bool isTaken = added.status() == dupFNErr || added.status() == diffVolErr;
        return isTaken ? added : Result<void>();
    }

    Result<void> finish(NameSteps& steps) const {
        OSA_CHECK(isAdded_ ? posix::remove(from_) : steps.rename(from_, interim_));
        if (interim_ == target_) return {};
        return steps.rename(interim_, target_);
    }

  private:
    /// A link that says where it leads from where it is would lead nowhere.
    Result<void> mayMove() const {
        if (folderOf(from_) == folderOf(target_)) return {};
        OSA_TRY(const posix::FileStatus status, posix::status(from_, posix::Follow::no));
        if (!status.isSymbolicLink()) return {};
        OSA_TRY(const std::string text, posix::readLink(from_));
        if (!text.starts_with('/')) return Failure(paramErr);
        return {};
    }

    /// "%name" is seen as soon as there is no "name". "._name" never is, and serves as well.
    Result<void> hide(NameSteps& steps, const Located& object) {
        const SideFile hidden{.how = Keeping::dotUnderscore, .path = {}, .root = {}};
        const std::string path = hidden.pathFor(object.folder(), object.name());
        const auto renamed = steps.rename(from_, path);
        if (renamed.ok()) from_ = path;
        if (renamed.status() != dupFNErr) return renamed;
        interim_ = target_;
        return {};
    }

    Keeping how_;
    std::string from_;
    std::string target_;
    std::string interim_;
    bool isAdded_ = false;
};

Result<void> carryOut(const Located& object, const Located& to) {
    const bool isFolder = object.status.isFolder();
    OSA_TRY(const auto files, sideFilesOf(object.folder(), object.name(), isFolder));
    // Left behind by others, they would become this object's. It may be one of them itself.
    OSA_TRY(const auto taken, sideFilesOf(to.folder(), to.name(), isFolder));
    const bool isTaken = std::ranges::any_of(
        taken, [&](const SideFile& file) { return file.path != object.path(); });
    if (isTaken) return Failure(dupFNErr);
    ClaimMoves claims = ClaimMoves::ofMove(object.path(), to.path());
    NameSteps steps;
    std::vector<SideMove> moves;
    for (const SideFile& file : files) moves.emplace_back(file, to);
    for (SideMove& move : moves) OSA_CHECK(move.prepare(steps, object));
    OSA_CHECK(steps.rename(object.path(), to.path()));
    for (const SideMove& move : moves) OSA_CHECK(move.finish(steps));
    claims.tell();
    steps.keep();
    return {};
}

Result<FSRef> moveTo(const Located& object, std::string_view folder, std::string_view name) {
    const Located to(folder, name);
    if (to.path() != object.path()) {
        const auto carried = carryOut(object, to);
        forgetLastObject();
        OSA_CHECK(carried);
    }
    return makeReference(internRealFolder(std::string(to.folder())), to.name(), object.status);
}

Result<FSRef> rename(const FSRef* ref, const UniChar* name, UniCharCount length) {
    OSA_TRY(const std::string leaf, leafFromUnicode(name, length));
    if (leaf == "." || leaf == "..") return Failure(bdNamErr);
    OSA_TRY(const Located named, describeReference(ref));
    const PartsLock lock(named.folder());
    OSA_TRY(const Located object, locate(ref));
    if (object.isRoot()) return Failure(paramErr);
    return moveTo(object, object.folder(), leaf);
}

Result<FSRef> move(const FSRef* ref, const FSRef* folder) {
    OSA_TRY(const Located named, describeReference(ref));
    OSA_TRY(const Located goal, describeReference(folder));
    const PartsLock lock(named.folder(), goal.path());
    OSA_TRY(const Located object, locate(ref));
    OSA_TRY(const Located to, locate(folder));
    if (object.isRoot()) return Failure(paramErr);
    if (!to.status.isFolder()) return Failure(errFSNotAFolder);
    if (to.status.device != object.status.device) return Failure(diffVolErr);
    const bool isInside = to.path() == object.path() || to.path().starts_with(object.path() + "/");
    if (isInside) return Failure(paramErr);
    return moveTo(object, to.path(), object.name());
}

template <typename Change>
OSErr deliver(FSRef* newRef, Change change) {
    try {
        const Result<FSRef> changed = change();
        if (changed.ok() && newRef != nullptr) *newRef = *changed;
        return static_cast<OSErr>(changed.status());
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}

}  // namespace
}  // namespace osa

OSErr FSRenameUnicode(const FSRef* ref, UniCharCount nameLength, const UniChar* name,
                      TextEncodingHint, FSRef* newRef) {
    return osa::deliver(newRef, [&] { return osa::rename(ref, name, nameLength); });
}

OSErr FSMoveObject(const FSRef* ref, const FSRef* destDirectory, FSRef* newRef) {
    return osa::deliver(newRef, [&] { return osa::move(ref, destDirectory); });
}
