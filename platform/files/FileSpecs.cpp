// FSMakeFSSpec, FSpMakeFSRef and FSpCreate.
#include "platform/files/FileSpecs.h"

#include <CoreServices/Finder.h>
#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>
#include <new>
#include <shared_mutex>
#include <utility>

#include "platform/files/Names.h"
#include "platform/files/Volumes.h"

namespace osa {
namespace {

struct FolderIDs {
    std::shared_mutex lock;
    std::map<std::pair<FSVolumeRefNum, UInt32>, std::string> paths;
};

FolderIDs& folderIDs() {
    static FolderIDs shared;
    return shared;
}

FSSpec makeSpec(FSVolumeRefNum volume, UInt32 parentID, const std::string& name) {
    FSSpec spec{};
    spec.vRefNum = volume;
    spec.parID = static_cast<SInt32>(parentID);
    spec.name[0] = static_cast<unsigned char>(name.size());
    std::copy(name.begin(), name.end(), spec.name + 1);
    return spec;
}

std::string_view textOf(ConstStr255Param name) {
    if (name == nullptr) return {};
    return {reinterpret_cast<const char*>(name) + 1, name[0]};
}

/// The FSSpec of `leaf` (Mac Roman, may be missing) in the folder at `path`.
Result<void> specInFolder(const std::string& path, std::string_view leaf, FSSpec& spec) {
    OSA_TRY(const posix::FileStatus status, posix::status(path, posix::Follow::yes));
    if (!status.isFolder()) return Failure(dirNFErr);
    if (leaf.size() >= sizeof(Str63)) return Failure(bdNamErr);
    OSA_TRY(const Volume volume, volumeOf(status.device, path));
    const UInt32 id = path == volume.mountPoint ? UInt32{fsRtDirID} : nodeIDFromInode(status.inode);
    rememberFolder(volume.number, id, path);
    spec = makeSpec(volume.number, id, std::string(leaf));
    const std::string child = joinPath(path, leafFromMacRoman(leaf));
    OSA_CHECK(posix::status(child, posix::Follow::no));
    return {};
}

/// `path` is "folder:leaf" below the folder.
Result<void> specBelow(std::string folder, std::string_view path, FSSpec& spec) {
    if (path.ends_with(':')) path.remove_suffix(1);
    for (std::size_t end = path.find(':'); end != std::string_view::npos; end = path.find(':')) {
        if (end == 0) return Failure(bdNamErr);
        folder = joinPath(folder, leafFromMacRoman(path.substr(0, end)));
        path.remove_prefix(end + 1);
    }
    if (path.empty()) return Failure(bdNamErr);
    const auto real = posix::realPath(folder);
    if (!real.ok()) return Failure(real.status() == fnfErr ? dirNFErr : real.status());
    return specInFolder(*real, path, spec);
}

/// "Volume:folder:leaf", or "Volume:" for the volume itself.
Result<void> specOfFullPath(std::string_view path, FSSpec& spec) {
    const std::size_t colon = path.find(':');
    const auto volume = findVolumeNamed(leafFromMacRoman(path.substr(0, colon)));
    if (!volume) return Failure(nsvErr);
    path.remove_prefix(colon + 1);
    if (!path.empty()) return specBelow(volume->mountPoint, path, spec);
    spec = makeSpec(volume->number, fsRtParID, volumeName(*volume).substr(0, 63));
    return {};
}

Result<void> specOfFolder(FSVolumeRefNum number, UInt32 id, FSSpec& spec) {
    const auto volume = findVolume(number);
    if (!volume) return Failure(nsvErr);
    OSA_TRY(const std::string path, rememberedFolder(number, id));
    if (path == volume->mountPoint) {
        spec = makeSpec(number, fsRtParID, volumeName(*volume).substr(0, 63));
        return {};
    }
    const std::size_t slash = path.rfind('/');
    OSA_TRY(const std::string leaf, macRomanFromLeaf(std::string_view(path).substr(slash + 1)));
    return specInFolder(slash == 0 ? "/" : path.substr(0, slash), leaf, spec);
}

Result<void> makeSpecOf(FSVolumeRefNum volume, UInt32 folderID, std::string_view name,
                        FSSpec& spec) {
    const bool isPath = name.find(':') != std::string_view::npos;
    if (isPath && !name.starts_with(':')) return specOfFullPath(name, spec);
    if (volume == 0 && folderID == 0) return Failure(bdNamErr);
    if (name.empty()) return specOfFolder(volume, folderID, spec);
    OSA_TRY(const std::string folder, rememberedFolder(volume, folderID));
    return specBelow(folder, isPath ? name.substr(1) : name, spec);
}

Result<FSRef> referenceToSpec(const FSSpec& spec) {
    if (spec.name[0] >= sizeof spec.name) return Failure(bdNamErr);
    const auto parentID = static_cast<UInt32>(spec.parID);
    if (parentID == fsRtParID) {
        const auto volume = findVolume(spec.vRefNum);
        if (!volume) return Failure(nsvErr);
        return referenceToRealPath(volume->mountPoint);
    }
    OSA_TRY(const std::string folder, rememberedFolder(spec.vRefNum, parentID));
    const std::string leaf = leafFromMacRoman(textOf(spec.name));
    if (leaf.empty() || leaf == "." || leaf == "..") return Failure(fnfErr);
    return referenceToRealPath(joinPath(folder, leaf));
}

}  // namespace

void rememberFolder(FSVolumeRefNum volume, UInt32 nodeID, const std::string& path) {
    FolderIDs& known = folderIDs();
    const std::unique_lock guard(known.lock);
    known.paths[{volume, nodeID}] = path;
}

Result<std::string> rememberedFolder(FSVolumeRefNum number, UInt32 id) {
    const auto volume = findVolume(number);
    if (!volume) return Failure(nsvErr);
    if (id == fsRtDirID || id == 0) return volume->mountPoint;
    FolderIDs& known = folderIDs();
    const std::shared_lock guard(known.lock);
    const auto found = known.paths.find({number, id});
    if (found == known.paths.end()) return Failure(dirNFErr);
    return found->second;
}

Result<FSSpec> specOf(const Located& object, FSVolumeRefNum volume, UInt32 parentID) {
    if (object.isRoot()) return makeSpec(volume, fsRtParID, bootVolumeName());
    OSA_TRY(const std::string name, macRomanFromLeaf(object.name()));
    rememberFolder(volume, parentID, std::string(object.folder()));
    return makeSpec(volume, parentID, name);
}

Result<SpecPlace> placeOf(const FSSpec& spec) {
    const auto parentID = static_cast<UInt32>(spec.parID);
    if (spec.name[0] == 0 || spec.name[0] >= sizeof spec.name || parentID == fsRtParID)
        return Failure(bdNamErr);
    OSA_TRY(const std::string folder, rememberedFolder(spec.vRefNum, parentID));
    SpecPlace place;
    const auto parent = referenceToRealPath(folder);
    if (!parent.ok()) return Failure(parent.status() == fnfErr ? dirNFErr : parent.status());
    place.parent = *parent;
    OSA_TRY(place.name, unicodeFromLeaf(leafFromMacRoman(textOf(spec.name))));
    return place;
}

FSCatalogInfo catalogInfoOf(OSType fileType, OSType creator) {
    FSCatalogInfo info{};
    FinderInfo finder{};
    finder.fdType = fileType;
    finder.fdCreator = creator;
    std::memcpy(&info.finderInfo, &finder, sizeof finder);
    return info;
}

}  // namespace osa

OSErr FSpCreate(const FSSpec* spec, OSType creator, OSType fileType, ScriptCode) try {
    if (spec == nullptr) return paramErr;
    const auto place = osa::placeOf(*spec);
    if (!place.ok()) return static_cast<OSErr>(place.status());
    const FSCatalogInfo info = osa::catalogInfoOf(fileType, creator);
    return FSCreateFileUnicode(&place->parent, place->name.length, place->name.unicode,
                               kFSCatInfoFinderInfo, &info, nullptr, nullptr);
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSErr FSMakeFSSpec(FSVolumeRefNum vRefNum, SInt32 dirID, ConstStr255Param fileName,
                   FSSpec* spec) try {
    if (spec == nullptr) return paramErr;
    *spec = {};
    const auto made =
        osa::makeSpecOf(vRefNum, static_cast<UInt32>(dirID), osa::textOf(fileName), *spec);
    return static_cast<OSErr>(made.status());
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSErr FSpMakeFSRef(const FSSpec* source, FSRef* newRef) try {
    if (source == nullptr || newRef == nullptr) return paramErr;
    const auto made = osa::referenceToSpec(*source);
    if (made.ok()) *newRef = *made;
    return static_cast<OSErr>(made.status());
} catch (const std::bad_alloc&) {
    return memFullErr;
}
