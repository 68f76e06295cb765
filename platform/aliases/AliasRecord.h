// Alias records: where a file or folder was when an alias to it was made.
//
//   offset  size
//        0     4  user type
//        4     2  size of the record
//        6     2  version: 2 or 3
//        8     2  kind: 0 file, 1 folder
// then a fixed part that differs between the versions, up to 150 or 58, and tagged extras:
// tag (signed 16 bits), length (16 bits), value, a pad byte behind an odd length; tag -1 ends them.
// Everything is big-endian; 8-bit names are in the writer's Mac script, taken for Mac Roman here.
#pragma once

#include <CoreServices/MacTypes.h>

#include <string>
#include <vector>

#include "platform/base/ByteReader.h"
#include "platform/base/Result.h"

namespace osa {

struct AliasRecord {
    static constexpr UInt32 kNoID = 0xFFFFFFFF;
    static constexpr UInt16 kHFSPlus = 0x482B;
    /// 1/65536 seconds since 1904, UTC; 0: not kept.
    using Date = UInt64;

    int version = 0;
    OSType userType = 0;
    bool isFolder = false;
    bool isKindKnown = true;  ///< bookmarks do not tell whether it is a folder
    /// kNoID: not kept.
    UInt32 parentID = kNoID;
    UInt32 targetID = kNoID;
    /// Names as in POSIX paths: ":" where the Mac shows "/".
    std::string targetName;
    std::string parentName;
    std::string volumeName;
    std::string zoneName;
    std::string serverName;
    Date targetCreated = 0;
    Date volumeCreated = 0;
    OSType type = 0;
    OSType creator = 0;
    UInt16 fileSystem = kHFSPlus;
    UInt16 driveType = 0;  ///< fixed disk
    UInt32 volumeAttributes = 0;
    UInt16 fileSystemID = 0;
    /// From the file that holds the alias up to the folder that it shares with the target, and from
    /// there down to the target, a step each; -1: not relative.
    SInt16 levelsUp = -1;
    SInt16 levelsDown = -1;
    /// From the parent folder up to the one below the volume's root.
    std::vector<UInt32> folderIDs;
    /// Below the volume's mount point, without a leading slash; empty when not kept.
    std::string pathOnVolume;
    /// Absolute; empty when not kept.
    std::string mountPoint;
    /// The path of the classic system as components, the volume's name first. Empty when not kept.
    std::vector<std::string> macPath;

    bool operator==(const AliasRecord&) const = default;

    /// Whether the target is a volume's root folder.
    bool isVolume() const { return isFolder && parentID == 1 && targetID == 2; }

    /// mapReadErr when the bytes are no record of version 2 or 3. What the extras lack is taken
    /// from the fixed part; a record that ends early gives what it holds.
    static Result<AliasRecord> parse(ByteSpan bytes);

    /// The record in version 2, whatever it was read from. 8-bit names that are too long for their
    /// field or hold what Mac Roman lacks get a short form with the ID in it, "Long na#1A2B.txt";
    /// the whole one is kept beside it in Unicode. The classic path is left out when it has no
    /// 8-bit form. pathTooLongErr for more than the 64 KiB that a record can hold.
    /// (AliasRecordWriting.cpp)
    Result<std::vector<std::byte>> write() const;
};

/// Tags of the extras.
enum class AliasTag : std::int16_t {
    end = -1,
    parentName = 0,
    folderIDs = 1,
    macPath = 2,
    zoneName = 3,
    serverName = 4,
    targetName = 14,
    volumeName = 15,
    volumeCreated = 16,
    targetCreated = 17,
    pathOnVolume = 18,
    mountPoint = 19,
};

}  // namespace osa
