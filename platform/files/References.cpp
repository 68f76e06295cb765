// Packing and unpacking references.
#include "platform/files/References.h"

#include <CoreServices/MacErrors.h>

#include <bit>
#include <cstring>

namespace osa {
namespace {

// A zeroed reference must not pass for one of ours.
constexpr std::uint32_t kMark = 0x52656631;
constexpr std::size_t kInlineName = 50;
constexpr std::uint16_t kLongName = 0xFFFF;
constexpr FolderIndex kNoFolder = 0xFFFFFFFF;

struct Packed {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint32_t mark = kMark;
    FolderIndex folder = kNoFolder;
    std::uint32_t birth = 0;
    std::uint16_t nameLength = 0;  // kLongName: the name is the number of an interned one
    char name[kInlineName] = {};
};
static_assert(sizeof(Packed) == sizeof(FSRef));

Packed pack(FolderIndex folder, std::string_view name, const posix::FileStatus& status) {
    Packed packed;
    packed.device = status.device;
    packed.inode = status.inode;
    packed.birth = status.birth();
    packed.folder = folder;
    if (name.size() <= kInlineName) {
        packed.nameLength = static_cast<std::uint16_t>(name.size());
        name.copy(packed.name, name.size());
    } else {
        packed.nameLength = kLongName;
        const std::uint32_t number = internLongName(std::string(name));
        std::memcpy(packed.name, &number, sizeof number);
    }
    return packed;
}

/// Empty when the reference is damaged.
std::string_view nameIn(const Packed& packed) {
    if (packed.nameLength <= kInlineName) return {packed.name, packed.nameLength};
    std::uint32_t number = 0;
    std::memcpy(&number, packed.name, sizeof number);
    const std::string* const text = packed.nameLength == kLongName ? longName(number) : nullptr;
    return text == nullptr ? std::string_view() : *text;
}

/// Splits an absolute path without a slash at its end.
void splitPath(const std::string& path, std::string& folder, std::string& name) {
    const std::size_t slash = path.rfind('/');
    folder = slash == 0 ? "/" : path.substr(0, slash);
    name = path.substr(slash + 1);
}

}  // namespace

std::string joinPath(std::string_view folder, std::string_view name, std::string_view rest) {
    std::string path;
    path.reserve(folder.size() + 1 + name.size() + rest.size());
    path += folder;
    if (path.empty() || path.back() != '/') path += '/';
    path.append(name).append(rest);
    return path;
}

Result<Located> describeReference(const FSRef* ref) {
    if (ref == nullptr) return Failure(paramErr);
    const auto packed = std::bit_cast<Packed>(*ref);
    if (packed.mark != kMark) return Failure(errFSBadFSRef);
    Located object;
    if (packed.folder != kNoFolder) {
        const std::string* const folder = folderPath(packed.folder);
        const std::string_view name = nameIn(packed);
        if (folder == nullptr || name.empty()) return Failure(errFSBadFSRef);
        object = Located(*folder, name);
    }
    object.status.device = packed.device;
    object.status.inode = packed.inode;
    object.birth = packed.birth;
    return object;
}

Result<Located> locate(const FSRef* ref) {
    OSA_TRY(Located object, describeReference(ref));
    OSA_TRY(const posix::FileStatus status, posix::status(object.path(), posix::Follow::no));
    if (!object.isStill(status)) return Failure(fnfErr);
    object.status = status;
    return object;
}

FSRef makeReference(FolderIndex folder, std::string_view name, const posix::FileStatus& status) {
    return std::bit_cast<FSRef>(pack(folder, name, status));
}

FSRef makeRootReference(const posix::FileStatus& status) {
    return std::bit_cast<FSRef>(pack(kNoFolder, {}, status));
}

Result<FSRef> referenceToRealPath(const std::string& path) {
    OSA_TRY(const posix::FileStatus status, posix::status(path, posix::Follow::no));
    if (path == "/") return makeRootReference(status);
    std::string folder;
    std::string name;
    splitPath(path, folder, name);
    return makeReference(internRealFolder(folder), name, status);
}

Result<FSRef> referenceToPath(std::string path, bool* isFolder) {
    if (path.empty()) return Failure(fnfErr);
    if (path.front() != '/') path = joinPath(posix::currentFolder(), path);
    const bool mustBeFolder = path.back() == '/';
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    OSA_TRY(posix::FileStatus status, posix::status(path, posix::Follow::no));
    std::string folder;
    std::string name;
    splitPath(path, folder, name);
    const bool isPlainName = !name.empty() && name != "." && name != "..";
    if (status.isSymbolicLink() || !isPlainName) {
        OSA_TRY(path, posix::realPath(path));
        OSA_TRY(status, posix::status(path, posix::Follow::no));
        splitPath(path, folder, name);
    }
    if (mustBeFolder && !status.isFolder()) return Failure(fnfErr);
    if (isFolder != nullptr) *isFolder = status.isFolder();
    if (path == "/") return makeRootReference(status);
    OSA_TRY(const FolderIndex index, internFolder(folder));
    return makeReference(index, name, status);
}

Result<FSRef> parentReference(const Located& object) {
    if (object.isRoot()) return FSRef{};
    return referenceToRealPath(std::string(object.folder()));
}

Result<std::uint64_t> volumeDevice(const Located& object) {
    if (object.status.isFolder()) return object.status.device;
    OSA_TRY(const posix::FileStatus folder,
            posix::status(std::string(object.folder()), posix::Follow::no));
    return folder.device;
}

UInt32 nodeIDFromInode(std::uint64_t inode) {
    const UInt32 folded = static_cast<UInt32>(inode) ^ static_cast<UInt32>(inode >> 32);
    return folded > fsRtDirID ? folded : ~folded;
}

UInt32 nodeID(const Located& object) {
    return object.isRoot() ? UInt32{fsRtDirID} : nodeIDFromInode(object.status.inode);
}

}  // namespace osa
