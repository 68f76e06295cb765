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
#include "platform/files/formats/AppleDouble.h"
#include "platform/files/stores/ForkProbe.h"
#include "platform/files/stores/SideFiles.h"
#include "platform/posix/CatalogChanges.h"

namespace osa {
namespace {

std::string folderOf(const std::string& path) {
    return path.substr(0, std::max<std::size_t>(path.rfind('/'), 1));
}

/// Two names of one file; after a crash in the middle of a renaming a side file has two.
bool isSameFile(const std::string& one, const std::string& other) {
    const auto first = posix::status(one, posix::Follow::no);
    const auto second = posix::status(other, posix::Follow::no);
    return first.ok() && second.ok() && first->isSameObject(*second);
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

    const std::string& from() const { return from_; }
    const std::string& target() const { return target_; }

    Result<void> prepare(NameSteps& steps, const Located& object) {
        OSA_CHECK(mayMove());
        OSA_CHECK(steps.makeFolder(folderOf(target_)));
        if (how_ == Keeping::percent) OSA_CHECK(hide(steps, object));
        if (how_ == Keeping::macosxFolder) return {};
        const auto added = steps.addName(from_, interim_);
        const bool isThere = added.status() == dupFNErr && isSameFile(from_, interim_);
        if (isThere) steps.adoptName(from_, interim_);
        isAdded_ = added.ok() || isThere;
        if (isAdded_) return {};
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
        const auto text = posix::readLink(from_);
        OSA_CHECK(text);
        if (!text->starts_with('/')) return Failure(paramErr);
        return {};
    }

    /// "%name" is seen as soon as there is no "name". "._name" never is, and serves as well.
    Result<void> hide(NameSteps& steps, const Located& object) {
        const SideFile hidden{.how = Keeping::dotUnderscore, .path = {}, .root = {}};
        const std::string path = hidden.pathFor(object.folder(), object.name());
        const auto renamed = steps.rename(from_, path);
        if (renamed.ok()) from_ = path;
        if (!renamed.ok() && renamed.status() != dupFNErr) return renamed;
        const bool isHidingPlaceFree =
            renamed.ok() && (posix::status(interim_, posix::Follow::no).status() == fnfErr ||
                             isSameFile(from_, interim_));
        if (!isHidingPlaceFree) interim_ = target_;
        return {};
    }

    Keeping how_;
    std::string from_;
    std::string target_;
    std::string interim_;
    bool isAdded_ = false;
};

/// Whether nobody would miss it: neither parts nor attributes nor anything else.
Result<bool> isBlankSideFile(const std::string& path) {
    OSA_TRY(const StoredParts parts, readAppleDoubleSideFile(path, false));
    const bool hasFork = parts.resourceFork != nullptr && parts.resourceFork->size() > 0;
    if (hasFork || !isBlank(parts.finderInfo)) return false;
    OSA_TRY(const auto source, posix::openSource(path));
    if (source->size() == 0) return true;
    const auto file = AppleDouble::parse(source);
    OSA_CHECK(file);
    return std::ranges::all_of(file->entries(), [](const AppleDouble::Entry& entry) {
        const std::uint64_t blank =
            entry.id == AppleDouble::finderInfo ? sizeof(FinderInfoBytes) : 0;
        return entry.range.length <= blank;
    });
}

/// Side files of two __MACOSX folders would get one name. Of these, blank ones are moved aside.
class Moves {
  public:
    Moves(const Located& object, const Located& to) : object_(object), to_(to) {}

    Result<void> add(const SideFile& file, NameSteps& steps) {
        SideMove move(file, to_);
        const auto same = std::ranges::find(moves_, move.target(), &SideMove::target);
        if (same == moves_.end()) {
            moves_.push_back(std::move(move));
            return {};
        }
        if (file.how == Keeping::macosxFolder) return Failure(paramErr);
        OSA_TRY(const bool isBlank, isBlankSideFile(file.path));
        OSA_TRY(const bool isFirstBlank, isBlankSideFile(same->from()));
        if (!isBlank && !isFirstBlank) return Failure(paramErr);
        if (!isBlank) std::swap(*same, move);
        OSA_TRY(std::string aside, steps.moveAside(move.from()));
        asides_.push_back(std::move(aside));
        return {};
    }
    Result<void> prepare(NameSteps& steps) {
        for (SideMove& move : moves_) OSA_CHECK(move.prepare(steps, object_));
        return {};
    }
    Result<void> finish(NameSteps& steps) const {
        for (const SideMove& move : moves_) OSA_CHECK(move.finish(steps));
        return {};
    }
    void clear() const {
        for (const std::string& path : asides_) posix::discard(path);
    }

  private:
    const Located& object_;  // weak
    const Located& to_;      // weak
    std::vector<SideMove> moves_;
    std::vector<std::string> asides_;
};

/// Left behind by others, side files of the new name would become this object's. It may be one of
/// them itself.
Result<bool> isTaken(const Located& to, const Located& object, const std::vector<SideFile>& own) {
    OSA_TRY(const auto there, sideFilesOf(to.folder(), to.name(), object.status.isFolder()));
    return std::ranges::any_of(there, [&](const SideFile& file) {
        if (file.path == object.path()) return false;
        return std::ranges::none_of(
            own, [&](const SideFile& each) { return isSameFile(each.path, file.path); });
    });
}

Result<void> carryOut(const Located& object, const Located& to) {
    OSA_TRY(const auto files,
            sideFilesOf(object.folder(), object.name(), object.status.isFolder()));
    OSA_TRY(const bool taken, isTaken(to, object, files));
    if (taken) return Failure(dupFNErr);
    ClaimMoves claims = ClaimMoves::ofMove(object.path(), to.path());
    NameSteps steps;
    Moves moves(object, to);
    for (const SideFile& file : files) OSA_CHECK(moves.add(file, steps));
    OSA_CHECK(moves.prepare(steps));
    OSA_CHECK(steps.rename(object.path(), to.path()));
    OSA_CHECK(moves.finish(steps));
    claims.tell();
    steps.keep();
    moves.clear();
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
    OSA_TRY(const std::uint64_t device, volumeDevice(object));
    if (to.status.device != device) return Failure(diffVolErr);
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
