// The file system as the rooms above see it: status, reading, links, folders and extended
// attributes. Paths are byte strings as the kernel takes them; a path with a NUL inside answers
// fnfErr. Failures are statuses (ErrnoStatus.h); nothing here logs.
#pragma once

#include <compare>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/ByteSource.h"
#include "platform/base/Result.h"

namespace osa::posix {

/// Whether a symbolic link at the end of a path is followed.
enum class Follow { no, yes };

/// Unix time.
struct Time {
    std::int64_t seconds = 0;
    std::uint32_t nanoseconds = 0;
    auto operator<=>(const Time&) const = default;
};

struct FileStatus {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint32_t mode = 0;
    std::uint32_t uid = 0;
    std::uint32_t gid = 0;
    std::uint32_t links = 0;
    std::uint64_t size = 0;
    Time modified;
    Time changed;
    Time accessed;
    /// The earliest other date where the file system keeps no creation date.
    Time created;
    bool keepsCreated = false;

    bool isFolder() const;
    bool isSymbolicLink() const;
    bool isRegular() const;
    bool isSameObject(const FileStatus& other) const {
        return device == other.device && inode == other.inode;
    }
    /// Tells objects apart that had the same inode number one after the other; 0 where the file
    /// system keeps no creation date.
    std::uint32_t birth() const;
    /// Whether content, metadata and identity are those of `other`, as far as dates can tell.
    bool isUnchangedSince(const FileStatus& other) const {
        return isSameObject(other) && size == other.size && modified == other.modified &&
               changed == other.changed;
    }
};

/// The present time.
Time now();
/// Whether `date` is so far back that a change after `observed` must have given another date. File
/// systems stamp with a coarse clock, so two changes close together can share a date.
bool isSettled(Time date, Time observed);

Result<FileStatus> status(const std::string& path, Follow follow);

/// A regular file that is open for reading, with its status at opening. Never reads ahead.
class OpenedFile : public ByteSource {
  public:
    virtual const FileStatus& status() const = 0;
};
/// notAFileErr for folders, devices and the like. `follow` no: a link answers notAFileErr too.
Result<std::shared_ptr<const OpenedFile>> openFile(const std::string& path, Follow follow);
Result<std::shared_ptr<const ByteSource>> openSource(const std::string& path);
/// The whole content; fileBoundsErr when it is longer than `limit`.
Result<std::vector<std::byte>> readFile(const std::string& path, std::uint64_t limit);

Result<std::string> readLink(const std::string& path);
/// Absolute, without links, "." and "..".
Result<std::string> realPath(const std::string& path);
std::string currentFolder();
/// The value of an environment variable; empty when unset.
std::string environment(const char* name);
/// The calling user's number and home folder from the user database (empty when there is none).
std::uint32_t userID();
/// The calling process's number.
std::uint32_t processID();
std::string homeFolder();

/// Reads a folder's names one after the other in the file system's order, without "." and "..".
class DirectoryReader {
  public:
    /// `follow` no: a link to a folder is not opened.
    static Result<DirectoryReader> open(const std::string& path, Follow follow = Follow::yes);
    DirectoryReader(DirectoryReader&&) noexcept;
    DirectoryReader& operator=(DirectoryReader&&) noexcept;
    ~DirectoryReader();
    /// The next name; an empty one at the end.
    Result<std::string> next();

  private:
    struct Stream;
    explicit DirectoryReader(std::unique_ptr<Stream> stream);
    std::unique_ptr<Stream> stream_;
};

/// The names of the object's own extended attributes; none where the file system keeps none.
Result<std::vector<std::string>> listAttributes(const std::string& path);
/// fnfErr when there is no such attribute. Links are not followed.
Result<std::vector<std::byte>> attribute(const std::string& path, const std::string& name);
/// dskFulErr when the file system has no room for it there.
Result<void> setAttribute(const std::string& path, const std::string& name, ByteSpan value);
/// Waits until content and attributes of a file are on disk. Links are not followed.
Result<void> synchronise(const std::string& path);
/// There being none is no failure.
Result<void> removeAttribute(const std::string& path, const std::string& name);
/// The largest value that the kernel takes.
inline constexpr std::uint64_t kLargestAttribute = 65536;

/// The permission bits of `mode` (07777). Links are followed.
Result<void> changeMode(const std::string& path, std::uint32_t mode);
/// A new empty file; dupFNErr when something has the name, even a link that leads nowhere.
Result<FileStatus> createFile(const std::string& path, std::uint32_t mode = 0666);
/// Only the last component is made; dupFNErr when something has the name.
Result<void> createFolder(const std::string& path, std::uint32_t mode = 0777);
/// Creates or replaces the whole file.
Result<void> writeFile(const std::string& path, ByteSpan content);
/// A file or an empty folder (fBsyErr when it is not).
Result<void> remove(const std::string& path);
/// Replaces a file of the new name.
Result<void> rename(const std::string& from, const std::string& to);

}  // namespace osa::posix
