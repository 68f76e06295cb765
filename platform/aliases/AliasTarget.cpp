// The places where an alias's target may be.
#include "platform/aliases/AliasTarget.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <optional>
#include <vector>

#include "platform/aliases/AliasPlaces.h"
#include "platform/files/Catalog.h"
#include "platform/files/FileSpecs.h"
#include "platform/files/References.h"
#include "platform/files/Volumes.h"

namespace osa {
namespace {

using Paths = std::vector<std::string>;

/// Components below the volume, from the record's own path or from the classic one.
Paths componentsBelowVolume(const AliasRecord& record) {
    if (!record.pathOnVolume.empty()) return pathComponents(record.pathOnVolume);
    if (record.macPath.empty()) return {};
    return Paths(record.macPath.begin() + 1, record.macPath.end());
}

std::optional<posix::FileStatus> folderStatus(const std::string& path) {
    const auto status = posix::status(path, posix::Follow::yes);
    if (!status.ok() || !status->isFolder()) return std::nullopt;
    return *status;
}

/// One search: what the record says, spread out.
class Search {
  public:
    Search(const AliasRecord& record, const std::string& aliasFolder)
        : record_(record),
          aliasFolder_(aliasFolder),
          below_(componentsBelowVolume(record)),
          leaf_(below_.empty() ? record.targetName : below_.back()) {
        if (record.mountPoint.starts_with('/') && folderStatus(record.mountPoint))
            roots_.push_back(record.mountPoint);
        if (const auto named = findVolumeNamed(record.volumeName)) addRoot(named->mountPoint);
        recordedRoots_ = roots_.size();
        if (aliasFolder.empty()) return;
        if (const auto status = folderStatus(aliasFolder)) {
            const auto volume = volumeOf(status->device, aliasFolder);
            if (volume.ok()) addRoot(volume->mountPoint);
        }
    }

    Result<AliasTarget> find() const {
        if (!below_.empty() || record_.isVolume()) {
            if (const auto found = findByPath()) return *found;
        }
        for (const std::string& parent : parentFolders()) {
            if (const auto found = findInParent(parent)) return AliasTarget{*found, true};
        }
        return Failure(missing());
    }

  private:
    void addRoot(const std::string& root) {
        if (std::ranges::find(roots_, root) == roots_.end()) roots_.push_back(root);
    }

    OSStatus missing() const {
        return record_.volumeName.empty() || recordedRoots_ > 0 ? fnfErr : nsvErr;
    }

    std::optional<FSRef> ofKindAt(const std::string& path) const {
        bool isFolder = false;
        const auto found = referenceToPath(path, &isFolder);
        if (found.ok() && isFolder == record_.isFolder) return *found;
        const auto status = posix::status(path, posix::Follow::no);
        if (!status.ok() || !status->isSymbolicLink() || record_.isFolder) return std::nullopt;
        const std::size_t slash = path.rfind('/');
        const auto folder = internFolder(slash == 0 ? "/" : path.substr(0, slash));
        if (!folder.ok()) return std::nullopt;
        return makeReference(*folder, std::string_view(path).substr(slash + 1), *status);
    }

    std::optional<AliasTarget> findByPath() const {
        for (std::size_t i = 0; i < recordedRoots_; ++i) {
            if (const auto found = ofKindAt(joinComponents(roots_[i], below_)))
                return AliasTarget{*found, false};
        }
        if (const std::string path = relativePath(); !path.empty()) {
            if (const auto found = ofKindAt(path)) return AliasTarget{*found, true};
        }
        for (std::size_t i = recordedRoots_; i < roots_.size(); ++i) {
            if (const auto found = ofKindAt(joinComponents(roots_[i], below_)))
                return AliasTarget{*found, true};
        }
        return std::nullopt;
    }

    /// Empty when the record does not say how the target lies to the alias.
    std::string relativePath() const {
        const auto down = static_cast<std::size_t>(std::max<SInt16>(record_.levelsDown, 0));
        if (aliasFolder_.empty() || record_.levelsUp < 1 || down < 1 || down > below_.size())
            return {};
        std::string folder = aliasFolder_;
        for (int up = record_.levelsUp; up > 1; --up) {
            if (folder == "/") return {};
            folder.resize(std::max<std::size_t>(folder.rfind('/'), 1));
        }
        return joinComponents(folder, Paths(below_.end() - record_.levelsDown, below_.end()));
    }

    /// The child of `folder` with this number: the one called `name`, else any.
    template <typename Accepts>
    std::optional<std::string> childWithID(const std::string& folder, const std::string& name,
                                           UInt32 id, Accepts accepts) const {
        const auto above = folderStatus(folder);
        if (!above) return std::nullopt;
        const auto isIt = [&](const std::string& child) {
            const auto status = posix::status(joinPath(folder, child), posix::Follow::no);
            return status.ok() && status->device == above->device &&
                   nodeIDFromInode(status->inode) == id && accepts(*status);
        };
        if (!name.empty() && isIt(name)) return joinPath(folder, name);
        auto names = posix::DirectoryReader::open(folder);
        if (!names.ok()) return std::nullopt;
        for (auto child = names->next(); child.ok() && !child->empty(); child = names->next()) {
            if (isIt(*child)) return joinPath(folder, *child);
        }
        return std::nullopt;
    }

    /// From the volume's root down, each folder by its number.
    std::optional<std::string> parentByNumbers(const std::string& root) const {
        if (below_.empty() && record_.parentID == fsRtDirID) return root;
        const std::vector<UInt32>& ids = record_.folderIDs;
        if (ids.size() + 1 != below_.size()) return std::nullopt;
        std::optional<std::string> path = root;
        for (std::size_t i = 0; path && i < ids.size(); ++i) {
            path = childWithID(*path, below_[i], ids[ids.size() - 1 - i],
                               [](const posix::FileStatus& status) { return status.isFolder(); });
        }
        return path;
    }

    /// Where this process has last seen a folder with the parent's number.
    std::optional<std::string> rememberedParent(const std::string& root) const {
        const auto status = folderStatus(root);
        if (!status) return std::nullopt;
        const auto volume = volumeOf(status->device, root);
        if (!volume.ok()) return std::nullopt;
        const auto path = rememberedFolder(volume->number, record_.parentID);
        if (!path.ok()) return std::nullopt;
        const auto found = folderStatus(*path);
        const bool isIt = found && found->device == volume->device &&
                          nodeIDFromInode(found->inode) == record_.parentID;
        return isIt ? std::optional(*path) : std::nullopt;
    }

    Paths parentFolders() const {
        Paths parents;
        if (record_.isVolume() || record_.parentID == 0 || record_.parentID == AliasRecord::kNoID)
            return parents;
        for (const std::string& root : roots_) {
            if (!canBeVolume(root)) continue;
            for (const auto& path : {parentByNumbers(root), rememberedParent(root)}) {
                if (path && std::ranges::find(parents, *path) == parents.end())
                    parents.push_back(*path);
            }
        }
        return parents;
    }

    /// Numbers of other disks' folders mean nothing on this one.
    bool canBeVolume(const std::string& root) const {
        const auto status = folderStatus(root);
        if (!status) return false;
        const AliasRecord::Date created = creationDate(*status);
        return created == 0 || record_.volumeCreated == 0 || created == record_.volumeCreated;
    }

    /// A number may belong to another object by now, but not with the same date.
    bool canBeTarget(const posix::FileStatus& status) const {
        if (status.isFolder() != record_.isFolder) return false;
        const bool hasDates = status.keepsCreated && record_.targetCreated != 0;
        return !hasDates || creationDate(status) == record_.targetCreated;
    }

    std::optional<FSRef> findInParent(const std::string& parent) const {
        if (record_.targetID != 0 && record_.targetID != AliasRecord::kNoID) {
            const auto path = childWithID(
                parent, {}, record_.targetID,
                [this](const posix::FileStatus& status) { return canBeTarget(status); });
            if (path) return ofKindAt(*path);
        }
        const bool isName =
            !leaf_.empty() && leaf_ != "." && leaf_ != ".." && leaf_.find('/') == std::string::npos;
        return isName ? ofKindAt(joinPath(parent, leaf_)) : std::nullopt;
    }

    const AliasRecord& record_;       // weak
    const std::string& aliasFolder_;  // weak
    Paths below_;
    std::string leaf_;
    Paths roots_;
    std::size_t recordedRoots_ = 0;  // of them, those that the record itself names
};

}  // namespace

Result<AliasTarget> findAliasTarget(const AliasRecord& record, const std::string& aliasFolder) {
    return Search(record, aliasFolder).find();
}

}  // namespace osa
