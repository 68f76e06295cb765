// FSGetCatalogInfo and FSSetCatalogInfo.
#include "platform/files/Catalog.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <new>
#include <optional>

#include "platform/files/FileSpecs.h"
#include "platform/files/Names.h"
#include "platform/files/Volumes.h"
#include "platform/files/stores/FinderInfoWriter.h"
#include "platform/files/stores/ForkProbe.h"
#include "platform/posix/CatalogChanges.h"

namespace osa {
namespace {

constexpr std::int64_t kSecondsFrom1904To1970 = 2082844800;
constexpr FSCatalogInfoBitmap kForkSizes = kFSCatInfoDataSizes | kFSCatInfoRsrcSizes;

UInt64 physicalSize(UInt64 logical) {
    return (logical + 4095) / 4096 * 4096;
}

Result<UInt32> parentID(const Located& object) {
    if (object.isRoot()) return UInt32{fsRtParID};
    if (object.folder() == "/") return UInt32{fsRtDirID};
    OSA_TRY(const posix::FileStatus folder,
            posix::status(std::string(object.folder()), posix::Follow::no));
    return nodeIDFromInode(folder.inode);
}

Result<UInt32> valence(const Located& object) {
    UInt32 count = 0;
    if (!object.status.isFolder()) return count;
    const std::string& path = object.path();
    OSA_TRY(auto names, posix::DirectoryReader::open(path));
    for (;;) {
        OSA_TRY(const std::string name, names.next());
        if (name.empty()) return count;
        if (!isSideFile(path, name)) ++count;
    }
}

/// Answers about one object, each read at most once.
class CatalogFiller {
  public:
    CatalogFiller(const Located& object, FSCatalogInfoBitmap which)
        : object_(object), which_(which) {}

    Result<void> fill(FSCatalogInfo& info) {
        const posix::FileStatus& status = object_.status;
        if (asked(kFSCatInfoTextEncoding)) info.textEncodingHint = 0;
        if (asked(kFSCatInfoNodeFlags)) info.nodeFlags = nodeFlags();
        OSA_CHECK(fillPlace(info));
        if (asked(kFSCatInfoCreateDate)) info.createDate = utcDateTime(status.created);
        if (asked(kFSCatInfoContentMod)) info.contentModDate = utcDateTime(status.modified);
        if (asked(kFSCatInfoAttrMod)) info.attributeModDate = utcDateTime(status.changed);
        if (asked(kFSCatInfoAccessDate)) info.accessDate = utcDateTime(status.accessed);
        if (asked(kFSCatInfoBackupDate)) info.backupDate = {};
        if (asked(kFSCatInfoPermissions)) {
            info.permissions = {status.uid, status.gid, 0, 0, static_cast<UInt16>(status.mode), 0};
        }
        OSA_CHECK(fillFinderInfo(info));
        if (asked(kFSCatInfoValence)) {
            OSA_TRY(info.valence, valence(object_));
        }
        return fillSizes(info);
    }

  private:
    bool asked(FSCatalogInfoBitmap field) const { return (which_ & field) != 0; }

    UInt16 nodeFlags() const {
        const bool isLocked = !object_.status.isSymbolicLink() && (object_.status.mode & 0222) == 0;
        return static_cast<UInt16>((isLocked ? kFSNodeLockedMask : 0) |
                                   (object_.status.isFolder() ? kFSNodeIsDirectoryMask : 0));
    }

    Result<void> fillPlace(FSCatalogInfo& info) {
        if (asked(kFSCatInfoVolume)) {
            OSA_TRY(const Volume volume, volumeOf(object_.status.device, object_.path()));
            info.volume = volume.number;
        }
        if (asked(kFSCatInfoParentDirID)) {
            OSA_TRY(info.parentDirID, parentID(object_));
        }
        if (asked(kFSCatInfoNodeID)) info.nodeID = nodeID(object_);
        // Whoever asks a folder for volume and ID may name its children by them.
        if (asked(kFSCatInfoVolume) && asked(kFSCatInfoNodeID) && object_.status.isFolder()) {
            rememberFolder(info.volume, info.nodeID, object_.path());
        }
        return {};
    }

    Result<void> fillFinderInfo(FSCatalogInfo& info) {
        if (!asked(kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo)) return {};
        OSA_TRY(const FinderInfoBytes bytes, findFinderInfo(object_));
        const bool isFolder = object_.status.isFolder();
        if (asked(kFSCatInfoFinderInfo)) info.finderInfo = basicFinderInfo(bytes, isFolder);
        if (asked(kFSCatInfoFinderXInfo)) info.extFinderInfo = extendedFinderInfo(bytes, isFolder);
        return {};
    }

    Result<void> fillSizes(FSCatalogInfo& info) {
        if (asked(kFSCatInfoDataSizes)) {
            info.dataLogicalSize = object_.status.isFolder() ? 0 : object_.status.size;
            info.dataPhysicalSize = physicalSize(info.dataLogicalSize);
        }
        if (asked(kFSCatInfoRsrcSizes)) {
            OSA_TRY(const auto fork, findResourceFork(object_));
            info.rsrcLogicalSize = fork ? fork->size() : 0;
            info.rsrcPhysicalSize = physicalSize(info.rsrcLogicalSize);
        }
        return {};
    }

    const Located& object_;  // weak
    FSCatalogInfoBitmap which_;
};

Result<void> getCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap which,
                            const CatalogTargets& targets) {
    OSA_TRY(const Located object, locate(ref));
    if (which != 0 && targets.info == nullptr) return Failure(paramErr);
    const bool isOnlySizes = which != 0 && (which & ~kForkSizes) == 0 && targets.name == nullptr &&
                             targets.spec == nullptr && targets.parent == nullptr;
    if (isOnlySizes && object.status.isFolder()) return Failure(fnfErr);
    return fillCatalog(object, which, targets);
}

/// Fields of one object set in turn, and back unless all of them are.
class CatalogSetting {
  public:
    CatalogSetting(const Located& object, FSCatalogInfoBitmap which, const FSCatalogInfo& info)
        : object_(object), which_(which), info_(info) {}
    CatalogSetting(const CatalogSetting&) = delete;
    CatalogSetting& operator=(const CatalogSetting&) = delete;
    ~CatalogSetting() {
        const posix::FileStatus& old = object_.status;
        if (areDatesSet_) posix::putBackDates(object_.path(), old.modified, old.accessed);
    }

    Result<void> run() {
        OSA_CHECK(setFinderInfo());
        OSA_CHECK(setDates());
        // Last, for the new mode may forbid what came before it. The mode of a link cannot be
        // changed; that of its target is not meant.
        const bool isMode = (which_ & kFSCatInfoPermissions) != 0;
        if (isMode && !object_.status.isSymbolicLink()) {
            OSA_CHECK(posix::changeMode(object_.path(), info_.permissions.mode));
        }
        areDatesSet_ = false;
        parts_.keep();
        return {};
    }

    static constexpr FSCatalogInfoBitmap kFinder = kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo;
    static constexpr FSCatalogInfoBitmap kDates = kFSCatInfoContentMod | kFSCatInfoAccessDate;

  private:
    Result<void> setFinderInfo() {
        if ((which_ & kFinder) == 0) return {};
        const bool isBasic = (which_ & kFSCatInfoFinderInfo) != 0;
        const bool isExtended = (which_ & kFSCatInfoFinderXInfo) != 0;
        OSA_CHECK(changeFinderInfo(parts_, object_, isBasic ? &info_.finderInfo : nullptr,
                                   isExtended ? &info_.extFinderInfo : nullptr));
        return parts_.carryOut();
    }

    Result<void> setDates() {
        if ((which_ & kDates) == 0) return {};
        std::optional<posix::Time> modified, accessed;
        if ((which_ & kFSCatInfoContentMod) != 0) modified = unixTime(info_.contentModDate);
        if ((which_ & kFSCatInfoAccessDate) != 0) accessed = unixTime(info_.accessDate);
        OSA_CHECK(posix::setDates(object_.path(), modified, accessed));
        areDatesSet_ = true;
        return {};
    }

    const Located& object_;  // weak
    const FSCatalogInfoBitmap which_;
    const FSCatalogInfo& info_;  // weak
    PartChanges parts_;
    bool areDatesSet_ = false;
};

Result<void> setCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap which,
                            const FSCatalogInfo* info) {
    if (which == 0) {
        OSA_CHECK(locate(ref));
        return {};
    }
    OSA_TRY(const Located named, describeReference(ref));
    const PartsLock lock(named.folder());
    OSA_TRY(const Located object, locate(ref));
    if (info == nullptr || (which & ~kFSCatInfoSettableInfo) != 0) return Failure(paramErr);
    constexpr FSCatalogInfoBitmap kPossible =
        kFSCatInfoPermissions | CatalogSetting::kFinder | CatalogSetting::kDates;
    if ((which & ~kPossible) != 0) return Failure(unimpErr);
    return CatalogSetting(object, which, *info).run();
}

}  // namespace

UTCDateTime utcDateTime(posix::Time time) {
    const auto seconds = static_cast<std::uint64_t>(
        std::max<std::int64_t>(time.seconds + kSecondsFrom1904To1970, 0));
    const std::uint64_t fraction = std::uint64_t{time.nanoseconds} * 65536 / 1'000'000'000;
    return {static_cast<UInt16>(seconds >> 32), static_cast<UInt32>(seconds),
            static_cast<UInt16>(fraction)};
}

posix::Time unixTime(UTCDateTime date) {
    const auto seconds = static_cast<std::int64_t>(std::uint64_t{date.highSeconds} << 32 |
                                                   std::uint64_t{date.lowSeconds});
    // Rounded up, so that it is read again as it was given.
    const std::uint64_t nanoseconds =
        (std::uint64_t{date.fraction} * 1'000'000'000 + 65535) / 65536;
    return {seconds - kSecondsFrom1904To1970, static_cast<std::uint32_t>(nanoseconds)};
}

Result<void> fillCatalog(const Located& object, FSCatalogInfoBitmap which,
                         const CatalogTargets& targets) {
    if (which != 0) OSA_CHECK(CatalogFiller(object, which).fill(*targets.info));
    if (targets.name != nullptr) {
        OSA_TRY(*targets.name,
                unicodeFromLeaf(object.isRoot() ? bootVolumeName() : std::string(object.name())));
    }
    if (targets.spec != nullptr) {
        OSA_TRY(const Volume volume, volumeOf(object.status.device, object.path()));
        OSA_TRY(const UInt32 parent, parentID(object));
        OSA_TRY(*targets.spec, specOf(object, volume.number, parent));
    }
    if (targets.parent != nullptr) {
        OSA_TRY(*targets.parent, parentReference(object));
    }
    return {};
}

}  // namespace osa

OSErr FSGetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap whichInfo, FSCatalogInfo* catalogInfo,
                       HFSUniStr255* outName, FSSpec* fsSpec, FSRef* parentRef) try {
    const osa::CatalogTargets targets{catalogInfo, outName, fsSpec, parentRef};
    return static_cast<OSErr>(osa::getCatalogInfo(ref, whichInfo, targets).status());
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSErr FSSetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap whichInfo,
                       const FSCatalogInfo* catalogInfo) {
    try {
        return static_cast<OSErr>(osa::setCatalogInfo(ref, whichInfo, catalogInfo).status());
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}
