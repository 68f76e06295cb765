// The table of volumes.
#include "platform/files/Volumes.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <limits>
#include <mutex>
#include <shared_mutex>
#include <vector>

#include "platform/cf/BootVolume.h"
#include "platform/posix/FileSystem.h"
#include "platform/text/TextConverter.h"

namespace osa {
namespace {

constexpr FSVolumeRefNum kRootVolume = -100;

struct VolumeTable {
    std::shared_mutex lock;
    std::vector<Volume> volumes;  // the root folder's first
};

VolumeTable& table() {
    static VolumeTable shared;
    return shared;
}

template <typename Matches>
std::optional<Volume> findKnown(Matches matches) {
    VolumeTable& known = table();
    const std::shared_lock guard(known.lock);
    const auto found = std::find_if(known.volumes.begin(), known.volumes.end(), matches);
    if (found == known.volumes.end()) return std::nullopt;
    return *found;
}

Result<Volume> add(std::uint64_t device, const std::string& mountPoint) {
    VolumeTable& known = table();
    const std::unique_lock guard(known.lock);
    for (const Volume& volume : known.volumes) {
        if (volume.device == device) return volume;
    }
    const std::size_t count = known.volumes.size();
    if (count > std::numeric_limits<SInt16>::max() / 2) return Failure(nsvErr);
    const auto number = static_cast<FSVolumeRefNum>(kRootVolume - static_cast<int>(count));
    known.volumes.push_back({number, device, mountPoint});
    return known.volumes.back();
}

Result<Volume> rootVolume() {
    const auto known = findKnown([](const Volume& volume) { return volume.number == kRootVolume; });
    if (known) return *known;
    OSA_TRY(const posix::FileStatus status, posix::status("/", posix::Follow::no));
    return add(status.device, "/");
}

/// The folder farthest up that is still on the device.
std::string mountPointOf(std::uint64_t device, std::string path) {
    while (path != "/") {
        const std::size_t slash = path.rfind('/');
        const std::string above = slash == 0 ? "/" : path.substr(0, slash);
        const auto status = posix::status(above, posix::Follow::no);
        if (!status.ok() || status->device != device) break;
        path = above;
    }
    return path;
}

/// An overlay of several file systems tells the numbers of these for files, and its own for
/// folders.
Result<Volume> volumeOfFolderAbove(const std::string& path) {
    const std::string above = path.substr(0, std::max<std::size_t>(path.rfind('/'), 1));
    OSA_TRY(const posix::FileStatus status, posix::status(above, posix::Follow::no));
    return volumeOf(status.device, above);
}

}  // namespace

Result<Volume> volumeOf(std::uint64_t device, const std::string& path) {
    OSA_TRY(const Volume root, rootVolume());
    if (root.device == device) return root;
    const auto known =
        findKnown([device](const Volume& volume) { return volume.device == device; });
    if (known) return *known;
    const std::string mountPoint = mountPointOf(device, path);
    if (mountPoint == path) {
        OSA_TRY(const posix::FileStatus status, posix::status(path, posix::Follow::no));
        if (!status.isFolder()) return volumeOfFolderAbove(path);
    }
    return add(device, mountPoint);
}

std::optional<Volume> findVolume(FSVolumeRefNum number) {
    if (!rootVolume().ok()) return std::nullopt;
    return findKnown([number](const Volume& volume) { return volume.number == number; });
}

std::optional<Volume> findVolumeNamed(const std::string& name) {
    if (!rootVolume().ok()) return std::nullopt;
    return findKnown([&name](const Volume& volume) { return volumeName(volume) == name; });
}

std::string bootVolumeName() {
    return utf8FromUTF16(kBootVolumeName);
}

std::string volumeName(const Volume& volume) {
    if (volume.mountPoint == "/") return bootVolumeName();
    return volume.mountPoint.substr(volume.mountPoint.rfind('/') + 1);
}

}  // namespace osa
