// The places where an alias's target may be.
#include "platform/aliases/AliasTarget.h"

#include <CoreServices/MacErrors.h>

#include <vector>

#include "platform/files/References.h"
#include "platform/files/Volumes.h"

namespace osa {
namespace {

/// The path below the volume, from the record's own or from the classic path.
std::string pathBelowVolume(const AliasRecord& record) {
    if (!record.pathOnVolume.empty()) return record.pathOnVolume;
    std::string path;
    for (std::size_t i = 1; i < record.macPath.size(); ++i) {
        if (!path.empty()) path += '/';
        path += record.macPath[i];
    }
    return path;
}

/// Most likely first.
std::vector<std::string> candidates(const AliasRecord& record, const std::string& aliasFolder) {
    std::vector<std::string> paths;
    const std::string below = pathBelowVolume(record);
    if (!below.empty()) {
        if (record.mountPoint.starts_with('/')) paths.push_back(joinPath(record.mountPoint, below));
        const auto named = findVolumeNamed(record.volumeName);
        if (named) paths.push_back(joinPath(named->mountPoint, below));
        const auto status = posix::status(aliasFolder, posix::Follow::yes);
        if (status.ok()) {
            const auto volume = volumeOf(status->device, aliasFolder);
            if (volume.ok()) paths.push_back(joinPath(volume->mountPoint, below));
        }
    }
    return paths;
}

}  // namespace

Result<FSRef> findAliasTarget(const AliasRecord& record, const std::string& aliasFolder) {
    for (const std::string& path : candidates(record, aliasFolder)) {
        bool isFolder = false;
        const auto found = referenceToPath(path, &isFolder);
        if (found.ok() && isFolder == record.isFolder) return found;
    }
    return Failure(fnfErr);
}

}  // namespace osa
