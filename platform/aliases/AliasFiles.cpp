// FSResolveAliasFileWithMountFlags and FSIsAliasFile.
#include <CoreServices/Aliases.h>
#include <CoreServices/MacErrors.h>

#include <optional>

#include "platform/aliases/AliasTarget.h"
#include "platform/base/FourCC.h"
#include "platform/files/stores/ForkProbe.h"
#include "platform/resources/ResourceFork.h"

namespace osa {
namespace {

constexpr int kLongestChain = 32;
// A record's size field has 16 bits; private bytes may lie behind the record.
constexpr std::uint64_t kLargestRecord = 131072;

/// The record of an alias file; none for every other file.
Result<std::optional<AliasRecord>> aliasRecordOf(const Located& object) {
    std::optional<AliasRecord> none;
    if (!object.status.isRegular()) return none;
    OSA_TRY(const FinderInfoBytes info, findFinderInfo(object));
    if ((basicFinderInfo(info, false).fdFlags & kIsAlias) == 0) return none;
    OSA_TRY(const auto stored, findResourceFork(object));
    if (!stored || stored->size() == 0) return none;
    OSA_TRY(const auto source, stored->open());
    const auto fork = ResourceFork::open(source);
    if (!fork.ok()) return none;
    const ResourceReference* const resource = fork->find(FourCC("alis"), 0);
    if (resource == nullptr) return none;
    OSA_TRY(CheckedRange range, fork->dataRange(*resource));
    range.length = std::min(range.length, kLargestRecord);
    OSA_TRY(const auto bytes, readRange(*source, range));
    // The file says that it is an alias: with a record that cannot be read it leads nowhere.
    const auto record = AliasRecord::parse(bytes);
    return record.ok() ? std::optional(*record) : std::optional(AliasRecord());
}

/// What `object` stands for, one step; none when it is no alias.
Result<std::optional<FSRef>> nextTarget(const Located& object, const SearchRules& rules) {
    std::optional<FSRef> none;
    if (object.status.isSymbolicLink()) {
        OSA_TRY(std::string target, posix::readLink(object.path()));
        if (!target.starts_with('/')) target = joinPath(object.folder(), target);
        OSA_TRY(const FSRef next, referenceToPath(std::move(target), nullptr));
        return std::optional(next);
    }
    OSA_TRY(const auto record, aliasRecordOf(object));
    if (!record) return none;
    OSA_TRY(const AliasTarget next, findAliasTarget(*record, std::string(object.folder()), rules));
    return std::optional(next.ref);
}

struct Resolved {
    FSRef target;
    bool isFolder = false;
    bool wasAlias = false;
};

Result<Resolved> resolve(const FSRef* ref, bool followChains, UInt32 mountFlags) {
    SearchRules rules;
    if ((mountFlags & kResolveAliasFileNoUI) != 0) rules.walk = SearchRules::Walk::never;
    OSA_TRY(Located object, locate(ref));
    Resolved result{*ref, object.status.isFolder()};
    for (int step = 0; step < kLongestChain; ++step) {
        OSA_TRY(const auto next, nextTarget(object, rules));
        if (!next) return result;
        OSA_TRY(object, locate(&*next));
        result = {*next, object.status.isFolder(), true};
        if (!followChains) return result;
    }
    return Failure(fnfErr);
}

}  // namespace
}  // namespace osa

OSErr FSResolveAliasFileWithMountFlags(FSRef* theRef, Boolean resolveAliasChains,
                                       Boolean* targetIsFolder, Boolean* wasAliased,
                                       UInt32 mountFlags) {
    if (theRef == nullptr || targetIsFolder == nullptr || wasAliased == nullptr) return paramErr;
    *targetIsFolder = *wasAliased = 0;
    const auto resolved = osa::resolve(theRef, resolveAliasChains != 0, mountFlags);
    if (!resolved.ok()) return static_cast<OSErr>(resolved.status());
    *theRef = resolved->target;
    *targetIsFolder = resolved->isFolder ? 1 : 0;
    *wasAliased = resolved->wasAlias ? 1 : 0;
    return noErr;
}

OSErr FSResolveAliasFile(FSRef* theRef, Boolean resolveAliasChains, Boolean* targetIsFolder,
                         Boolean* wasAliased) {
    return FSResolveAliasFileWithMountFlags(theRef, resolveAliasChains, targetIsFolder, wasAliased,
                                            0);
}

OSErr FSIsAliasFile(const FSRef* fileRef, Boolean* aliasFileFlag, Boolean* folderFlag) {
    if (aliasFileFlag == nullptr || folderFlag == nullptr) return paramErr;
    *aliasFileFlag = *folderFlag = 0;
    const auto object = osa::locate(fileRef);
    if (!object.ok()) return static_cast<OSErr>(object.status());
    *folderFlag = object->status.isFolder() ? 1 : 0;
    *aliasFileFlag = object->status.isSymbolicLink() ? 1 : 0;
    if (*aliasFileFlag != 0) return noErr;
    const auto record = osa::aliasRecordOf(*object);
    if (record.ok() && *record) *aliasFileFlag = 1;
    return static_cast<OSErr>(record.status());
}
