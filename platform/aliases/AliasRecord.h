// Alias records: where a file or folder was when an alias to it was made.
//
//   offset  size
//        0     4  user type
//        4     2  size of the record
//        6     2  version: 2 or 3
//        8     2  kind: 0 file, 1 folder
// then a fixed part that differs between the versions, up to 150 or 58, and tagged extras:
// tag (signed 16 bits), length (16 bits), value, a pad byte behind an odd length; tag -1 ends them.
// Everything is big-endian; 8-bit names are in the writer's Mac script, read as Mac Roman here.
#pragma once

#include <CoreServices/MacTypes.h>

#include <string>
#include <vector>

#include "platform/base/ByteReader.h"
#include "platform/base/Result.h"

namespace osa {

struct AliasRecord {
    int version = 0;
    bool isFolder = false;
    UInt32 parentID = 0;
    UInt32 targetID = 0;  ///< 0xFFFFFFFF: not kept
    /// Names as in POSIX paths: ":" where the Mac shows "/".
    std::string targetName;
    std::string volumeName;
    /// Below the volume's mount point, without a leading slash; empty when not kept.
    std::string pathOnVolume;
    /// Absolute; empty when not kept.
    std::string mountPoint;
    /// The path of the classic system as components, the volume's name first. Empty when not kept.
    std::vector<std::string> macPath;

    /// mapReadErr when the bytes are no record of version 2 or 3. What the extras lack is taken
    /// from the fixed part; a record that ends early gives what it holds.
    static Result<AliasRecord> parse(ByteSpan bytes);
};

}  // namespace osa
