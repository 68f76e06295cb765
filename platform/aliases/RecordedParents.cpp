// Folders by their numbers.
#include "platform/aliases/RecordedParents.h"

#include <CoreServices/Files.h>

#include <algorithm>

#include "platform/aliases/AliasPlaces.h"
#include "platform/files/FileSpecs.h"
#include "platform/files/References.h"
#include "platform/files/Volumes.h"

namespace osa {
namespace {

bool isFolderOnly(const std::string&, const posix::FileStatus& status) {
    return status.isFolder();
}

/// From the volume's root down, each folder by its number.
std::optional<std::string> parentByNumbers(const AliasRecord& record,
                                           const std::vector<std::string>& below,
                                           const std::string& root) {
    if (below.empty() && record.parentID == fsRtDirID) return root;
    const std::vector<UInt32>& ids = record.folderIDs;
    if (ids.size() + 1 != below.size()) return std::nullopt;
    std::optional<std::string> path = root;
    for (std::size_t i = 0; path && i < ids.size(); ++i)
        path = childWithNumber(*path, below[i], ids[ids.size() - 1 - i], isFolderOnly);
    return path;
}

/// Where this process has last seen a folder with the parent's number.
std::optional<std::string> rememberedParent(const AliasRecord& record, const std::string& root) {
    const auto status = folderStatus(root);
    if (!status) return std::nullopt;
    const auto volume = volumeOf(status->device, root);
    if (!volume.ok()) return std::nullopt;
    const auto path = rememberedFolder(volume->number, record.parentID);
    if (!path.ok()) return std::nullopt;
    const auto found = folderStatus(*path);
    const bool isIt = found && found->device == volume->device &&
                      nodeIDFromInode(found->inode) == record.parentID;
    return isIt ? std::optional(*path) : std::nullopt;
}

}  // namespace

Dates compareDates(AliasRecord::Date one, AliasRecord::Date other) {
    if (one == 0 || other == 0) return Dates::notKept;
    const bool inSeconds = (one & 0xFFFF) == 0 || (other & 0xFFFF) == 0;
    const bool agree = inSeconds ? one >> 16 == other >> 16 : one == other;
    return agree ? Dates::agree : Dates::differ;
}

std::optional<posix::FileStatus> folderStatus(const std::string& path) {
    const auto status = posix::status(path, posix::Follow::yes);
    if (!status.ok() || !status->isFolder()) return std::nullopt;
    return *status;
}

bool hasNumber(const AliasRecord& record) {
    return record.targetID != 0 && record.targetID != AliasRecord::kNoID;
}

bool canBeVolume(const AliasRecord& record, const std::string& root) {
    const auto status = folderStatus(root);
    return status && compareDates(creationDate(*status), record.volumeCreated) != Dates::differ;
}

std::optional<std::string> childWithNumber(const std::string& folder, const std::string& name,
                                           UInt32 number, const AcceptsChild& accepts) {
    const auto above = folderStatus(folder);
    if (!above) return std::nullopt;
    const auto isIt = [&](const std::string& child) {
        const auto status = posix::status(joinPath(folder, child), posix::Follow::no);
        return status.ok() && (!status->isFolder() || status->device == above->device) &&
               nodeIDFromInode(status->inode) == number && accepts(child, *status);
    };
    if (!name.empty() && isIt(name)) return joinPath(folder, name);
    auto names = posix::DirectoryReader::open(folder);
    if (!names.ok()) return std::nullopt;
    for (auto child = names->next(); child.ok() && !child->empty(); child = names->next()) {
        if (isIt(*child)) return joinPath(folder, *child);
    }
    return std::nullopt;
}

std::vector<std::string> recordedParents(const AliasRecord& record,
                                         const std::vector<std::string>& below,
                                         const std::string& root) {
    std::vector<std::string> parents;
    const bool hasParent = record.parentID != 0 && record.parentID != AliasRecord::kNoID;
    if (record.isVolume() || !hasParent || !canBeVolume(record, root)) return parents;
    for (auto& path : {parentByNumbers(record, below, root), rememberedParent(record, root)}) {
        if (path && std::ranges::find(parents, *path) == parents.end()) parents.push_back(*path);
    }
    return parents;
}

}  // namespace osa
