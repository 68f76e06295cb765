// Volumes: each device number gets a volume reference number when it is first met.
#pragma once

#include <CoreServices/Files.h>

#include <cstdint>
#include <optional>
#include <string>

#include "platform/base/Result.h"

namespace osa {

struct Volume {
    FSVolumeRefNum number = 0;
    std::uint64_t device = 0;
    std::string mountPoint;
};

/// The volume of an object on `device` that lies at `path`. The root folder's is -100, others
/// follow downward in the order in which they are met.
Result<Volume> volumeOf(std::uint64_t device, const std::string& path);
/// One that was met before, or the root folder's.
std::optional<Volume> findVolume(FSVolumeRefNum number);
std::optional<Volume> findVolumeNamed(const std::string& name);

/// The name that stands for the volume in Mac paths: its mount point's own, except for the root
/// folder's volume.
std::string volumeName(const Volume& volume);
std::string bootVolumeName();

}  // namespace osa
