// Reading and replacing the records in handles.
#include "platform/aliases/AliasHandles.h"

#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <algorithm>

#include "platform/aliases/RecordedParents.h"

namespace osa {
namespace {

bool isOtherNumber(UInt32 recorded, UInt32 now) {
    return recorded != AliasRecord::kNoID && recorded != 0 && recorded != now;
}

template <typename Value>
bool isOther(const Value& recorded, const Value& now) {
    return recorded != Value() && recorded != now;
}

bool isOtherPlace(const AliasRecord& recorded, const AliasRecord& now) {
    if (isOther(recorded.mountPoint, now.mountPoint)) return true;
    if (!recorded.pathOnVolume.empty())
        return pathComponents(recorded.pathOnVolume) != pathComponents(now.pathOnVolume);
    return isOther(recorded.macPath, now.macPath);
}

bool isOtherObject(const AliasRecord& recorded, const AliasRecord& now) {
    return isOtherNumber(recorded.parentID, now.parentID) ||
           isOtherNumber(recorded.targetID, now.targetID) ||
           isOther(recorded.folderIDs, now.folderIDs) ||
           compareDates(recorded.targetCreated, now.targetCreated) == Dates::differ ||
           compareDates(recorded.volumeCreated, now.volumeCreated) == Dates::differ;
}

}  // namespace

ByteSpan aliasBytes(AliasHandle alias) {
    const auto handle = reinterpret_cast<Handle>(alias);
    if (handle == nullptr || *handle == nullptr) return {};
    return {reinterpret_cast<const std::byte*>(*handle),
            static_cast<std::size_t>(GetHandleSize(handle))};
}

Result<AliasRecord> aliasRecord(AliasHandle alias) {
    auto record = AliasRecord::parse(aliasBytes(alias));
    if (!record.ok()) return Failure(paramErr);
    return record;
}

Result<bool> storeRecord(AliasHandle alias, const AliasRecord& record) {
    OSA_TRY(std::vector<std::byte> bytes, record.write());
    const ByteSpan old = aliasBytes(alias);
    const ByteSpan behind = old.subspan(static_cast<std::size_t>(GetAliasSize(alias)));
    bytes.insert(bytes.end(), behind.begin(), behind.end());
    if (std::ranges::equal(old, bytes)) return false;
    const auto handle = reinterpret_cast<Handle>(alias);
    SetHandleSize(handle, static_cast<Size>(bytes.size()));
    if (GetHandleSize(handle) != static_cast<Size>(bytes.size())) return Failure(memFullErr);
    std::ranges::copy(bytes, reinterpret_cast<std::byte*>(*handle));
    return true;
}

Result<std::optional<AliasRecord>> correctedRecord(const AliasRecord& recorded,
                                                   const Located& target, const Located* fromFile) {
    OSA_TRY(AliasRecord now, recordOf(target));
    const bool isMoved = isOtherPlace(recorded, now);
    if (fromFile != nullptr) {
        OSA_CHECK(addRelation(now, *fromFile));
    } else if (!isMoved) {
        now.levelsUp = recorded.levelsUp;
        now.levelsDown = recorded.levelsDown;
    }
    const bool isRelated = recorded.levelsUp != -1;
    const bool isOtherWay =
        isRelated && (recorded.levelsUp != now.levelsUp || recorded.levelsDown != now.levelsDown);
    const bool isOtherVolume = isOther(recorded.volumeName, now.volumeName);
    if (!isMoved && !isOtherWay && !isOtherVolume && !isOtherObject(recorded, now) &&
        !isOther(recorded.targetName, now.targetName))
        return std::optional<AliasRecord>();
    now.userType = recorded.userType;
    // Where this system keeps neither, the Mac's are better than none.
    if (now.type == 0 && now.creator == 0) {
        now.type = recorded.type;
        now.creator = recorded.creator;
    }
    if (!isOtherVolume) {
        now.zoneName = recorded.zoneName;
        now.serverName = recorded.serverName;
    }
    return std::optional(std::move(now));
}

}  // namespace osa
