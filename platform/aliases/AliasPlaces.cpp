// Making records of objects, and of paths to objects that need not exist.
#include "platform/aliases/AliasPlaces.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>

#include "platform/files/Catalog.h"
#include "platform/files/FileSpecs.h"
#include "platform/files/Names.h"
#include "platform/files/Volumes.h"
#include "platform/files/stores/ForkProbe.h"

namespace osa {
namespace {

struct Place {
    Volume volume;
    std::string below;  // without a leading slash; empty: the volume's root folder
};

Result<Place> placeOf(const Located& object) {
    OSA_TRY(Volume volume, volumeOf(object.status.device, object.path()));
    const std::string& path = object.path();
    if (path == volume.mountPoint) return Place{volume, {}};
    if (path.starts_with(joinPath(volume.mountPoint, {})))
        return Place{volume, path.substr(joinPath(volume.mountPoint, {}).size())};
    // Its file system is mounted here too, apart from where it was first met.
    volume.mountPoint = "/";
    return Place{volume, path.substr(1)};
}

/// From `folder` up to the one below `top`.
Result<std::vector<UInt32>> numbersUpTo(const std::string& top, std::string folder) {
    std::vector<UInt32> ids;
    while (folder.size() > top.size()) {
        OSA_TRY(const posix::FileStatus status, posix::status(folder, posix::Follow::no));
        ids.push_back(nodeIDFromInode(status.inode));
        folder.resize(std::max<std::size_t>(folder.rfind('/'), 1));
    }
    return ids;
}

void fillVolume(AliasRecord& record, const Volume& volume) {
    record.volumeName = volumeName(volume);
    record.mountPoint = volume.mountPoint;
    const auto status = posix::status(volume.mountPoint, posix::Follow::no);
    if (status.ok()) record.volumeCreated = creationDate(*status);
}

void fillTypes(AliasRecord& record, const Located& target) {
    if (!target.status.isRegular()) return;
    const auto bytes = findFinderInfo(target);
    if (!bytes.ok()) return;
    const FinderInfo info = basicFinderInfo(*bytes, false);
    record.type = info.fdType;
    record.creator = info.fdCreator;
}

/// A name that no path may step over.
bool isStep(const std::string& name) {
    return name.empty() || name == "." || name == "..";
}

}  // namespace

std::vector<std::string> pathComponents(std::string_view path) {
    std::vector<std::string> components;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find('/'), path.size());
        if (end > 0) components.emplace_back(path.substr(0, end));
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return components;
}

std::string joinComponents(std::string path, const std::vector<std::string>& components) {
    for (const std::string& component : components) path = joinPath(path, component);
    return path;
}

std::string absolutePath(const AliasRecord& record) {
    if (!record.mountPoint.starts_with('/')) return {};
    if (record.pathOnVolume.empty()) return record.isVolume() ? record.mountPoint : std::string();
    return joinPath(record.mountPoint, record.pathOnVolume);
}

AliasRecord::Date creationDate(const posix::FileStatus& status) {
    if (!status.keepsCreated) return 0;
    const UTCDateTime date = utcDateTime(status.created);
    return AliasRecord::Date{date.highSeconds} << 48 | AliasRecord::Date{date.lowSeconds} << 16 |
           date.fraction;
}

Result<AliasRecord> recordOf(const Located& target) {
    OSA_TRY(const Place place, placeOf(target));
    AliasRecord record;
    record.isFolder = target.status.isFolder();
    fillVolume(record, place.volume);
    record.targetCreated = creationDate(target.status);
    record.pathOnVolume = place.below;
    record.macPath = {record.volumeName};
    if (place.below.empty()) {
        record.parentID = fsRtParID;
        record.targetID = fsRtDirID;
        record.targetName = record.volumeName;
        return record;
    }
    const std::string folder(target.folder());
    OSA_TRY(record.folderIDs, numbersUpTo(place.volume.mountPoint, folder));
    record.parentID = record.folderIDs.empty() ? UInt32{fsRtDirID} : record.folderIDs.front();
    if (!record.folderIDs.empty()) {
        record.parentName = folder.substr(folder.rfind('/') + 1);
        rememberFolder(place.volume.number, record.parentID, folder);
    } else {
        record.parentName = record.volumeName;
    }
    record.targetID = nodeIDFromInode(target.status.inode);
    record.targetName = target.name();
    std::ranges::move(pathComponents(place.below), std::back_inserter(record.macPath));
    fillTypes(record, target);
    return record;
}

Result<void> addRelation(AliasRecord& record, const Located& fromFile) {
    OSA_TRY(const Place place, placeOf(fromFile));
    if (place.volume.mountPoint != record.mountPoint) return {};
    const auto from = pathComponents(place.below);
    const auto to = pathComponents(record.pathOnVolume);
    if (from.empty() || to.empty()) return {};
    const auto differ = std::mismatch(from.begin(), from.end() - 1, to.begin(), to.end() - 1);
    record.levelsUp = static_cast<SInt16>(from.end() - differ.first);
    record.levelsDown = static_cast<SInt16>(to.end() - differ.second);
    return {};
}

Result<AliasRecord> recordOfFullPath(std::string_view path) {
    const std::size_t colon = path.find(':');
    if (colon == 0 || colon == std::string_view::npos) return Failure(bdNamErr);
    AliasRecord record;
    record.isFolder = path.ends_with(':');
    if (record.isFolder) path.remove_suffix(1);
    while (!path.empty()) {
        const std::size_t end = std::min(path.find(':'), path.size());
        record.macPath.push_back(leafFromMacRoman(path.substr(0, end)));
        if (isStep(record.macPath.back())) return Failure(bdNamErr);
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    record.volumeName = record.macPath.front();
    record.targetName = record.macPath.back();
    const std::vector<std::string> below(record.macPath.begin() + 1, record.macPath.end());
    if (below.empty()) {
        record.parentID = fsRtParID;
        record.targetID = fsRtDirID;
    }
    const auto volume = findVolumeNamed(record.volumeName);
    if (!volume) return record;
    fillVolume(record, *volume);
    if (!below.empty()) record.pathOnVolume = joinComponents({}, below).substr(1);
    const auto status =
        posix::status(joinComponents(volume->mountPoint, below), posix::Follow::yes);
    if (status.ok()) record.isFolder = status->isFolder();
    return record;
}

}  // namespace osa
