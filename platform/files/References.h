// What lies inside an FSRef, and the way from a reference to the object on disk.
#pragma once

#include <CoreServices/Files.h>

#include <string>
#include <string_view>

#include "platform/files/FolderTable.h"
#include "platform/files/changes/PartsLock.h"
#include "platform/posix/FileSystem.h"

namespace osa {

/// "folder/name", and `rest` behind it, without doubling the slash of the root.
std::string joinPath(std::string_view folder, std::string_view name, std::string_view rest = {});

/// An object found on disk: where it is and what the system says of it.
class Located {
  public:
    /// The root folder.
    Located() = default;
    /// `folder`: absolute, without links. `name`: leaf as on disk.
    Located(std::string_view folder, std::string_view name)
        : path_(joinPath(folder, name)), leaf_(path_.size() - name.size()) {}

    posix::FileStatus status;
    std::uint32_t birth = 0;               ///< of the object when the reference was made
    std::uint64_t seenAt = partChanges();  ///< what isSteadySince asks for; the status came later

    const std::string& path() const { return path_; }
    /// The root folder is its own.
    std::string_view folder() const {
        return std::string_view(path_).substr(0, leaf_ == 1 ? 1 : leaf_ - 1);
    }
    /// Empty for the root folder.
    std::string_view name() const { return std::string_view(path_).substr(leaf_); }
    bool isRoot() const { return leaf_ == path_.size(); }
    /// Whether `found` is the object that the reference was made of.
    bool isStill(const posix::FileStatus& found) const {
        return found.isSameObject(status) && found.birth() == birth;
    }

  private:
    std::string path_ = "/";
    std::size_t leaf_ = 1;  // where the name begins
};

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

/// The device number of the volume it is on. In an overlay a file's own may be another than its
/// folder's.
Result<std::uint64_t> volumeDevice(const Located& object);

/// The 64-bit inode number folded to 32 bits; small ones stay as they are, but for 0 to 2, which
/// mean a volume's root folder and what is above it, whatever their inode numbers.
UInt32 nodeIDFromInode(std::uint64_t inode);
/// 2 for the root folder.
UInt32 nodeID(const Located& object);

}  // namespace osa
