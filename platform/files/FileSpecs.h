// Old-style specifications, and the memory of which node ID is which folder that they need.
#pragma once

#include <CoreServices/Files.h>

#include "platform/files/References.h"

namespace osa {

/// From now on specifications may name the folder by this node ID.
void rememberFolder(FSVolumeRefNum volume, UInt32 nodeID, const std::string& path);

/// bdNamErr when the object's name has no old-style form.
Result<FSSpec> specOf(const Located& object, FSVolumeRefNum volume, UInt32 parentID);

}  // namespace osa
