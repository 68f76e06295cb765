// Old-style specifications, and the memory of which node ID is which folder that they need.
#pragma once

#include <CoreServices/Files.h>

#include "platform/files/References.h"

namespace osa {

/// From now on specifications may name the folder by this node ID.
void rememberFolder(FSVolumeRefNum volume, UInt32 nodeID, const std::string& path);

/// The path remembered for the ID, where another folder may be by now; the mount point for 0 and
/// fsRtDirID. nsvErr: no such volume; dirNFErr: none is remembered.
Result<std::string> rememberedFolder(FSVolumeRefNum volume, UInt32 nodeID);

/// bdNamErr when the object's name has no old-style form.
Result<FSSpec> specOf(const Located& object, FSVolumeRefNum volume, UInt32 parentID);

/// Where the object of an FSSpec lies, or would lie; bdNamErr for what is no name there.
struct SpecPlace {
    FSRef parent;
    HFSUniStr255 name;
};
Result<SpecPlace> placeOf(const FSSpec& spec);

/// Finder information of a new file.
FSCatalogInfo catalogInfoOf(OSType fileType, OSType creator);

}  // namespace osa
