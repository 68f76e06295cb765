// What lies inside an FSRef, and the way from a reference to the object on disk.
#pragma once

#include <CoreServices/Files.h>

#include <string>
#include <string_view>

#include "platform/files/FolderTable.h"
#include "platform/posix/FileSystem.h"

namespace osa {

/// An object found on disk: where it is and what the system says of it.
struct Located {
    std::string folder;  ///< absolute, without links; empty for the root folder itself
    std::string name;    ///< leaf as on disk; empty for the root folder
    posix::FileStatus status;
    std::uint32_t birth = 0;  ///< of the object when the reference was made

    /// Whether `found` is the object that the reference was made of.
    bool isStill(const posix::FileStatus& found) const {
        return found.isSameObject(status) && found.birth() == birth;
    }
    std::string path() const;
    bool isRoot() const { return name.empty(); }
};

/// "folder/name" without doubling the slash of the root.
std::string joinPath(std::string_view folder, std::string_view name);

/// Asks the disk: paramErr for null, errFSBadFSRef, or fnfErr when another object is in its place.
Result<Located> locate(const FSRef* ref);
/// The parts without asking the disk; the status holds device and inode only.
Result<Located> describeReference(const FSRef* ref);

/// The reference of a child of a folder that is in the table.
FSRef makeReference(FolderIndex folder, std::string_view name, const posix::FileStatus& status);
FSRef makeRootReference(const posix::FileStatus& status);
/// The reference of the object at an absolute real path (no links but the last component).
Result<FSRef> referenceToRealPath(const std::string& path);
/// The reference of whatever `path` leads to, links followed. `isFolder` may be null.
Result<FSRef> referenceToPath(std::string path, bool* isFolder);
/// A zeroed reference for the root folder.
Result<FSRef> parentReference(const Located& object);

/// The 64-bit inode number folded to 32 bits; small ones stay as they are.
UInt32 nodeIDFromInode(std::uint64_t inode);
/// 2 for the root folder.
UInt32 nodeID(const Located& object);

}  // namespace osa
