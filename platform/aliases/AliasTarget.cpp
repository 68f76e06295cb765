// The places where an alias's target may be.
#include "platform/aliases/AliasTarget.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <optional>
#include <vector>

#include "platform/aliases/AliasPlaces.h"
#include "platform/aliases/AliasWalk.h"
#include "platform/aliases/RecordedParents.h"
#include "platform/files/References.h"
#include "platform/files/Volumes.h"

namespace osa {
namespace {

using Paths = std::vector<std::string>;

// Volumes are numbered downward from this one.
constexpr FSVolumeRefNum kRootVolume = -100;

/// Components below the volume, from the record's own path or from the classic one.
Paths componentsBelowVolume(const AliasRecord& record) {
    if (!record.pathOnVolume.empty()) return pathComponents(record.pathOnVolume);
    if (record.macPath.empty()) return {};
    return Paths(record.macPath.begin() + 1, record.macPath.end());
}

bool isLeaf(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

std::string pathAbove(const std::string& path) {
    return path.substr(0, std::max<std::size_t>(path.rfind('/'), 1));
}

/// Whether something of this kind may be what the record names.
bool isOfKind(const AliasRecord& record, bool isFolder) {
    return !record.isKindKnown || record.isFolder == isFolder;
}

/// What `path` leads to, or the link there itself when it leads to nothing of the record's kind.
std::optional<FSRef> ofKindAt(const std::string& path, const AliasRecord& record) {
    bool isFolder = false;
    const auto found = referenceToPath(path, &isFolder);
    if (found.ok() && isOfKind(record, isFolder)) return *found;
    const auto status = posix::status(path, posix::Follow::no);
    if (!status.ok() || !status->isSymbolicLink() || !isOfKind(record, false)) return std::nullopt;
    const auto folder = internFolder(pathAbove(path));
    if (!folder.ok()) return std::nullopt;
    return makeReference(*folder, std::string_view(path).substr(path.rfind('/') + 1), *status);
}

/// One search: what the record says, spread out.
class Search {
  public:
    Search(const AliasRecord& record, const std::string& aliasFolder, const SearchRules& rules,
           const TakeTarget& take)
        : record_(record),
          aliasFolder_(aliasFolder),
          rules_(rules),
          take_(take),
          below_(componentsBelowVolume(record)),
          leaf_(below_.empty() ? record.targetName : below_.back()) {
        findRoots();
    }

    Result<void> run() {
        using enum SearchRules::Walk;
        if (rules_.numberFirst) tryNumberInParents(Certainty::sure);
        if (rules_.relationFirst) tryRelation();
        tryNumberInParents(Certainty::sure);
        tryPath(0, recordedRoots_);
        if (!rules_.relationFirst) tryRelation();
        tryPath(recordedRoots_, roots_.size());
        tryNumberInParents(Certainty::likely);
        tryNameInParents();
        if (rules_.walk == always || (rules_.walk == whenNothingElseFinds && found_.empty()))
            tryWalk();
        if (!found_.empty()) return {};
        return Failure(record_.volumeName.empty() || recordedRoots_ > 0 ? fnfErr : nsvErr);
    }

  private:
    void findRoots() {
        if (record_.mountPoint.starts_with('/') && folderStatus(record_.mountPoint))
            roots_.push_back(record_.mountPoint);
        if (const auto named = findVolumeNamed(record_.volumeName)) addRoot(named->mountPoint);
        recordedRoots_ = roots_.size();
        if (!aliasFolder_.empty()) {
            if (const auto status = folderStatus(aliasFolder_)) {
                const auto volume = volumeOf(status->device, aliasFolder_);
                if (volume.ok()) addRoot(volume->mountPoint);
            }
        }
        if (!rules_.everyVolume) return;
        FSVolumeRefNum number = kRootVolume;
        while (const auto volume = findVolume(number--)) addRoot(volume->mountPoint);
    }

    void addRoot(const std::string& root) {
        if (std::ranges::find(roots_, root) == roots_.end()) roots_.push_back(root);
    }

    /// Offers what is at `path`, when it is of the target's kind.
    void offer(const std::string& path, FoundBy by) {
        if (isDone_) return;
        const auto ref = ofKindAt(path, record_);
        if (!ref) return;
        const auto object = describeReference(&*ref);
        if (!object.ok() || std::ranges::find(found_, object->path()) != found_.end()) return;
        found_.push_back(object->path());
        isDone_ = !take_({*ref, path, by});
    }

    void tryPath(std::size_t first, std::size_t end) {
        if (below_.empty() && !record_.isVolume()) return;
        for (std::size_t i = first; i < end && !isDone_; ++i)
            offer(joinComponents(roots_[i], below_), FoundBy::path);
    }

    bool isRecordedPath(const std::string& path) const {
        return std::ranges::any_of(
            roots_, [&](const std::string& root) { return path == joinComponents(root, below_); });
    }

    /// Nothing when the record does not say how the target lies to the alias.
    void tryRelation() {
        const auto down = static_cast<std::size_t>(std::max<SInt16>(record_.levelsDown, 0));
        if (aliasFolder_.empty() || record_.levelsUp < 1 || down < 1 || down > below_.size())
            return;
        std::string folder = aliasFolder_;
        for (int up = record_.levelsUp; up > 1; --up) {
            if (folder == "/") return;
            folder = pathAbove(folder);
        }
        offer(joinComponents(folder, Paths(below_.end() - record_.levelsDown, below_.end())),
              FoundBy::relation);
    }

    const Paths& parents() {
        if (!parents_) {
            parents_.emplace();
            for (const std::string& root : roots_) {
                for (std::string& parent : recordedParents(record_, below_, root)) {
                    if (std::ranges::find(*parents_, parent) == parents_->end())
                        parents_->push_back(std::move(parent));
                }
            }
        }
        return *parents_;
    }

    /// Sure: the date says so, too. Likely: no dates are kept.
    enum class Certainty { sure, likely };

    void tryNumberInParents(Certainty certainty) {
        if (isDone_ || !hasNumber(record_)) return;
        const Dates wanted = certainty == Certainty::sure ? Dates::agree : Dates::notKept;
        const auto accepts = [&](const std::string&, const posix::FileStatus& status) {
            return isOfKind(record_, status.isFolder()) &&
                   compareDates(creationDate(status), record_.targetCreated) == wanted;
        };
        for (const std::string& parent : parents()) {
            if (isDone_) return;
            const auto path = childWithNumber(parent, leaf_, record_.targetID, accepts);
            if (path) offer(*path, isRecordedPath(*path) ? FoundBy::path : FoundBy::number);
        }
    }

    void tryNameInParents() {
        if (isDone_ || !isLeaf(leaf_)) return;
        for (const std::string& parent : parents()) {
            if (!isDone_) offer(joinPath(parent, leaf_), FoundBy::name);
        }
    }

    void tryWalk() {
        const bool byName = rules_.walkTakesNames && isLeaf(leaf_);
        if (record_.isVolume() || (!hasNumber(record_) && !byName)) return;
        WalkBudget budget;
        for (const std::string& root : roots_) {
            if (isDone_ || budget.isSpent()) return;
            const bool numbersHold = hasNumber(record_) && canBeVolume(record_, root);
            const auto volume = folderStatus(root);
            if (!volume || (!numbersHold && !byName)) continue;
            const SoughtObject sought{volume->device, record_.targetID, record_.targetCreated,
                                      leaf_};
            if (!byName && isKnownAsLost(sought)) continue;
            bool isMet = false;
            const bool isUndisturbed = walkOutward(
                walkStart(root), budget,
                [&](const std::string& folder, const std::string& name,
                    const posix::FileStatus& status) {
                    if ((numbersHold && isTarget(name, status)) || (byName && name == leaf_)) {
                        isMet = true;
                        offer(joinPath(folder, name), FoundBy::walk);
                    }
                    return !isDone_;
                });
            if (numbersHold && !isMet && isUndisturbed) rememberLost(sought);
        }
    }

    /// A number may belong to another object by now, but not with the same date or name.
    bool isTarget(const std::string& name, const posix::FileStatus& status) const {
        if (nodeIDFromInode(status.inode) != record_.targetID ||
            !isOfKind(record_, status.isFolder()))
            return false;
        const Dates dates = compareDates(creationDate(status), record_.targetCreated);
        return dates == Dates::agree || (dates == Dates::notKept && name == leaf_);
    }

    /// The recorded parent, or what is left of the path to it.
    std::string walkStart(const std::string& root) {
        const auto rootStatus = folderStatus(root);
        const auto isOnVolume = [&](const std::string& path) {
            const auto status = posix::status(path, posix::Follow::no);
            return status.ok() && status->isFolder() && status->device == rootStatus->device;
        };
        if (!rootStatus) return root;
        for (const std::string& parent : parents()) {
            if (isOnVolume(parent)) return parent;
        }
        Paths way = below_;
        while (!way.empty()) {
            way.pop_back();
            std::string folder = joinComponents(root, way);
            // A link on the way would lead the walk away from the volume's own folders.
            const auto real = posix::realPath(folder);
            if (real.ok() && *real == folder && isOnVolume(folder)) return folder;
        }
        return root;
    }

    const AliasRecord& record_;       // weak
    const std::string& aliasFolder_;  // weak
    const SearchRules& rules_;        // weak
    const TakeTarget& take_;          // weak
    Paths below_;
    std::string leaf_;
    Paths roots_;
    std::size_t recordedRoots_ = 0;  // of them, those that the record itself names
    std::optional<Paths> parents_;
    Paths found_;
    bool isDone_ = false;
};

}  // namespace

Result<void> findAliasTargets(const AliasRecord& record, const std::string& aliasFolder,
                              const SearchRules& rules, const TakeTarget& take) {
    return Search(record, aliasFolder, rules, take).run();
}

Result<AliasTarget> findAliasTarget(const AliasRecord& record, const std::string& aliasFolder,
                                    const SearchRules& rules) {
    AliasTarget found;
    OSA_CHECK(findAliasTargets(record, aliasFolder, rules, [&](const AliasTarget& target) {
        found = target;
        return false;
    }));
    return found;
}

}  // namespace osa
