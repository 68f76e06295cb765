// The published calls that make, spell and compare references, and that describe volumes.
#include <CoreServices/Files.h>
#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <new>

#include "platform/files/Names.h"
#include "platform/files/References.h"
#include "platform/files/Volumes.h"

namespace osa {
namespace {

Result<FSRef> childReference(const FSRef* parent, const UniChar* name, UniCharCount length) {
    OSA_TRY(const Located folder, locate(parent));
    if (!folder.status.isFolder()) return Failure(errFSNotAFolder);
    OSA_TRY(const std::string leaf, leafFromUnicode(name, length));
    if (leaf == "." || leaf == "..") return Failure(fnfErr);
    const std::string& path = folder.path();
    OSA_TRY(const posix::FileStatus status, posix::status(joinPath(path, leaf), posix::Follow::no));
    return makeReference(internRealFolder(path), leaf, status);
}

Result<void> makePath(const FSRef* ref, UInt8* target, UInt32 size) {
    if (target == nullptr) return Failure(paramErr);
    OSA_TRY(const Located object, locate(ref));
    const std::string& path = object.path();
    if (path.size() >= size) return Failure(pathTooLongErr);
    std::copy_n(path.c_str(), path.size() + 1, target);
    return {};
}

Result<void> compare(const FSRef* first, const FSRef* second) {
    OSA_TRY(const Located one, locate(first));
    OSA_TRY(const Located other, locate(second));
    if (one.status.isSameObject(other.status)) return {};
    return Failure(one.status.device == other.status.device ? errFSRefsDifferent : diffVolErr);
}

struct VolumeTargets {
    FSVolumeRefNum* number;
    HFSUniStr255* name;
    FSRef* root;
};

Result<void> describeVolume(FSVolumeRefNum number, const VolumeTargets& targets) {
    const auto volume = findVolume(number);
    if (!volume) return Failure(nsvErr);
    if (targets.number != nullptr) *targets.number = volume->number;
    if (targets.name != nullptr) {
        OSA_TRY(*targets.name, unicodeFromLeaf(volumeName(*volume)));
    }
    if (targets.root != nullptr) {
        OSA_TRY(*targets.root, referenceToRealPath(volume->mountPoint));
    }
    return {};
}

}  // namespace
}  // namespace osa

OSErr FSMakeFSRefUnicode(const FSRef* parent, UniCharCount nameLength, const UniChar* name,
                         TextEncodingHint, FSRef* newRef) try {
    const auto made = osa::childReference(parent, name, nameLength);
    if (made.ok() && newRef != nullptr) *newRef = *made;
    return static_cast<OSErr>(made.status());
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSStatus FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory) try {
    if (path == nullptr) return paramErr;
    bool isFolder = false;
    const auto made = osa::referenceToPath(reinterpret_cast<const char*>(path), &isFolder);
    if (!made.ok()) return made.status();
    if (ref != nullptr) *ref = *made;
    if (isDirectory != nullptr) *isDirectory = isFolder ? 1 : 0;
    return noErr;
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSStatus FSRefMakePath(const FSRef* ref, UInt8* path, UInt32 pathSize) try {
    return osa::makePath(ref, path, pathSize).status();
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSErr FSCompareFSRefs(const FSRef* ref1, const FSRef* ref2) try {
    return static_cast<OSErr>(osa::compare(ref1, ref2).status());
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSErr FSGetVolumeInfo(FSVolumeRefNum volume, ItemCount volumeIndex, FSVolumeRefNum* actualVolume,
                      FSVolumeInfoBitmap whichInfo, FSVolumeInfo*, HFSUniStr255* volumeName,
                      FSRef* rootDirectory) try {
    if (volumeIndex != 0 || whichInfo != kFSVolInfoNone) return paramErr;
    const osa::VolumeTargets targets{actualVolume, volumeName, rootDirectory};
    return static_cast<OSErr>(osa::describeVolume(volume, targets).status());
} catch (const std::bad_alloc&) {
    return memFullErr;
}
