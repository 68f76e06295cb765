// What the records in handles tell, and the mark that applications put on them.
#include <CoreFoundation/CFRef.h>
#include <CoreServices/Aliases.h>
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <algorithm>
#include <new>

#include "platform/aliases/AliasHandles.h"
#include "platform/base/ByteWriter.h"
#include "platform/files/Names.h"

namespace osa {
namespace {

constexpr UInt16 kHFS = 0x4244;
constexpr UInt16 kHFSX = 0x4858;
constexpr UInt16 kFirstEjectableDrive = 2;

UTCDateTime dateTime(AliasRecord::Date date) {
    UTCDateTime made;
    made.highSeconds = static_cast<UInt16>(date >> 48);
    made.lowSeconds = static_cast<UInt32>(date >> 16);
    made.fraction = static_cast<UInt16>(date);
    return made;
}

UInt32 knownNumber(UInt32 number) {
    return number == AliasRecord::kNoID ? 0 : number;
}

bool keepsFileIDs(UInt16 fileSystem) {
    return fileSystem == kHFS || fileSystem == AliasRecord::kHFSPlus || fileSystem == kHFSX;
}

FSAliasInfo infoOf(const AliasRecord& record) {
    FSAliasInfo info{};
    info.volumeCreateDate = dateTime(record.volumeCreated);
    info.targetCreateDate = dateTime(record.targetCreated);
    info.fileType = record.type;
    info.fileCreator = record.creator;
    info.parentDirID = knownNumber(record.parentID);
    info.nodeID = knownNumber(record.targetID);
    info.filesystemID = record.fileSystemID;
    info.signature = record.fileSystem;
    if (!record.mountPoint.empty()) {
        info.volumeIsBootVolume = record.mountPoint == "/";
        info.volumeIsEjectable = record.driveType >= kFirstEjectableDrive;
        info.volumeHasPersistentFileIDs = keepsFileIDs(record.fileSystem);
    }
    info.isDirectory = record.isFolder;
    return info;
}

FSAliasInfoBitmap fieldsOf(const AliasRecord& record) {
    FSAliasInfoBitmap fields = kFSAliasInfoIsDirectory;
    if (record.volumeCreated != 0) fields |= kFSAliasInfoVolumeCreateDate;
    if (record.targetCreated != 0) fields |= kFSAliasInfoTargetCreateDate;
    if (record.type != 0 || record.creator != 0) fields |= kFSAliasInfoFinderInfo;
    if (knownNumber(record.parentID) != 0 || knownNumber(record.targetID) != 0)
        fields |= kFSAliasInfoIDs;
    if (record.fileSystem != 0) fields |= kFSAliasInfoFSInfo;
    if (!record.mountPoint.empty()) fields |= kFSAliasInfoVolumeFlags;
    return fields;
}

/// Null when the record holds no absolute path; bdNamErr when it is no UTF-8.
Result<CFRef<CFStringRef>> pathStringOf(const AliasRecord& record) {
    const std::string path = absolutePath(record);
    if (path.empty()) return CFRef<CFStringRef>();
    auto string = CFRef<CFStringRef>::Adopt(
        CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(path.data()),
                                static_cast<CFIndex>(path.size()), kCFStringEncodingUTF8, false));
    if (!string) return Failure(bdNamErr);
    return string;
}

struct InfoTargets {
    HFSUniStr255* targetName;
    HFSUniStr255* volumeName;
    CFStringRef* pathString;
    FSAliasInfoBitmap* whichInfo;
    FSAliasInfo* info;
};

Result<void> copyInfo(AliasHandle alias, const InfoTargets& targets) {
    OSA_TRY(const AliasRecord record, aliasRecord(alias));
    HFSUniStr255 targetName{};
    HFSUniStr255 volumeName{};
    if (targets.targetName != nullptr) {
        OSA_TRY(targetName, unicodeFromLeaf(record.targetName));
    }
    if (targets.volumeName != nullptr) {
        OSA_TRY(volumeName, unicodeFromLeaf(record.volumeName));
    }
    if (targets.pathString != nullptr) {
        OSA_TRY(CFRef<CFStringRef> path, pathStringOf(record));
        *targets.pathString = path.leak();
    }
    if (targets.targetName != nullptr) *targets.targetName = targetName;
    if (targets.volumeName != nullptr) *targets.volumeName = volumeName;
    if (targets.whichInfo != nullptr) *targets.whichInfo = fieldsOf(record);
    if (targets.info != nullptr) *targets.info = infoOf(record);
    return {};
}

}  // namespace
}  // namespace osa

OSStatus FSCopyAliasInfo(AliasHandle inAlias, HFSUniStr255* targetName, HFSUniStr255* volumeName,
                         CFStringRef* pathString, FSAliasInfoBitmap* whichInfo, FSAliasInfo* info) {
    if (inAlias == nullptr) return paramErr;
    if (pathString != nullptr) *pathString = nullptr;
    try {
        return osa::copyInfo(inAlias, {targetName, volumeName, pathString, whichInfo, info})
            .status();
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}

Size GetAliasSize(AliasHandle alias) {
    const osa::ByteSpan bytes = osa::aliasBytes(alias);
    osa::ByteReader reader(bytes);
    reader.skip(4);
    return std::min<Size>(reader.u16(), static_cast<Size>(bytes.size()));
}

OSType GetAliasUserType(AliasHandle alias) {
    return osa::ByteReader(osa::aliasBytes(alias)).fourCC();
}

void SetAliasUserType(AliasHandle alias, OSType userType) {
    if (osa::aliasBytes(alias).size() < sizeof userType) return;
    const osa::ByteWriter mark = std::move(osa::ByteWriter().fourCC(userType));
    std::ranges::copy(osa::asText(mark.view()), *reinterpret_cast<Handle>(alias));
}
