// FSResolveAliasFileWithMountFlags and FSIsAliasFile.
#include <CoreServices/Aliases.h>
#include <CoreServices/MacErrors.h>

#include <new>
#include <optional>

#include "platform/aliases/AliasContent.h"
#include "platform/aliases/AliasTarget.h"

namespace osa {
namespace {

constexpr int kLongestChain = 32;

/// What `object` stands for, one step; none when it is no alias.
Result<std::optional<FSRef>> nextTarget(const Located& object, const SearchRules& rules) {
    OSA_TRY(const AliasContent content, aliasContent(object));
    switch (content.kind) {
        case AliasContent::Kind::none:
            return std::optional<FSRef>();
        case AliasContent::Kind::link: {
            const bool isAbsolute = content.link.starts_with('/');
            OSA_TRY(
                const FSRef next,
                referenceToPath(isAbsolute ? content.link : joinPath(object.folder(), content.link),
                                nullptr));
            return std::optional(next);
        }
        default: {
            OSA_TRY(const AliasTarget next,
                    findAliasTarget(content.record, std::string(object.folder()), rules));
            return std::optional(next.ref);
        }
    }
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
    try {
        const auto resolved = osa::resolve(theRef, resolveAliasChains != 0, mountFlags);
        if (!resolved.ok()) return static_cast<OSErr>(resolved.status());
        *theRef = resolved->target;
        *targetIsFolder = resolved->isFolder ? 1 : 0;
        *wasAliased = resolved->wasAlias ? 1 : 0;
        return noErr;
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}

OSErr FSResolveAliasFile(FSRef* theRef, Boolean resolveAliasChains, Boolean* targetIsFolder,
                         Boolean* wasAliased) {
    return FSResolveAliasFileWithMountFlags(theRef, resolveAliasChains, targetIsFolder, wasAliased,
                                            0);
}

OSErr ResolveAliasFile(FSSpec* theSpec, Boolean resolveAliasChains, Boolean* targetIsFolder,
                       Boolean* wasAliased) {
    if (targetIsFolder == nullptr || wasAliased == nullptr) return paramErr;
    *targetIsFolder = *wasAliased = 0;
    FSRef ref;
    if (const OSErr status = FSpMakeFSRef(theSpec, &ref); status != noErr) return status;
    const OSErr status = FSResolveAliasFile(&ref, resolveAliasChains, targetIsFolder, wasAliased);
    if (status != noErr || *wasAliased == 0) return status;
    FSSpec target;
    const OSErr told = FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, nullptr, &target, nullptr);
    if (told == noErr) *theSpec = target;
    return told;
}

OSErr FSIsAliasFile(const FSRef* fileRef, Boolean* aliasFileFlag, Boolean* folderFlag) {
    if (aliasFileFlag == nullptr || folderFlag == nullptr) return paramErr;
    *aliasFileFlag = *folderFlag = 0;
    try {
        const auto object = osa::locate(fileRef);
        if (!object.ok()) return static_cast<OSErr>(object.status());
        *folderFlag = object->status.isFolder() ? 1 : 0;
        const auto content = osa::aliasContent(*object);
        if (!content.ok()) return static_cast<OSErr>(content.status());
        *aliasFileFlag = content->kind != osa::AliasContent::Kind::none ? 1 : 0;
        return noErr;
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}
