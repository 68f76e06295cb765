// SAliasHandleBase: making, resolving, naming and comparing aliases.
#include "Libraries/MacToolboxLib/TBUtilities/SAliasHandleBase.h"

#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <cstring>
#include <optional>

#include "Libraries/MacToolboxLib/TBUtilities/Assertions.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"

namespace {

constexpr char kUnit[] = "Libraries/MacToolboxLib/TBUtilities";

OSStatus ResolveAlias(const FSRef* from, AliasHandle alias, CFileSpec& target, bool* wasChanged) {
    FSRef ref;
    Boolean changed = false;
    const OSStatus status = FSResolveAlias(from, alias, &ref, &changed);
    if (status != noErr) return status;
    target = CFileSpec(ref);
    if (wasChanged != nullptr) *wasChanged = changed != 0;
    return noErr;
}

void UpdateAlias(const FSRef* from, const FSRef& target, AliasHandle alias) {
    TB_ASSERT_TEXT(kUnit, alias != nullptr, "GetAliasHandle()");
    Boolean wasChanged = false;
    FailOSErr(FSUpdateAlias(from, &target, alias, &wasChanged));
}

struct NodeIDs {
    UInt32 own;
    UInt32 other;
};

/// Nothing when one of the targets cannot be reached.
std::optional<NodeIDs> TargetNodeIDs(const SAliasHandleBase& own, const SAliasHandleBase& other) {
    try {
        CFileSpec ownTarget;
        CFileSpec otherTarget;
        own.Resolve(ownTarget, nullptr);
        other.Resolve(otherTarget, nullptr);
        return NodeIDs{ownTarget.GetNodeID(), otherTarget.GetNodeID()};
    } catch (...) {
        return std::nullopt;
    }
}

}  // namespace

void SAliasHandleBase::Make(const CFileSpec& target) {
    DisposeAliasHandle();
    FailOSErr(FSNewAlias(nullptr, &target.GetFSRef(), &GetAliasHandle()));
}

void SAliasHandleBase::Make(const CFileSpec& from, const CFileSpec& target) {
    DisposeAliasHandle();
    FailOSErr(FSNewAlias(&from.GetFSRef(), &target.GetFSRef(), &GetAliasHandle()));
}

void SAliasHandleBase::Make(const void* data, Size size) {
    DisposeAliasHandle();
    const Handle copy = NewHandleClear(size);
    GetAliasHandle() = reinterpret_cast<AliasHandle>(copy);
    if (copy != nullptr && size >= 1) std::memcpy(*copy, data, static_cast<std::size_t>(size));
}

void SAliasHandleBase::Update(const CFileSpec& target) {
    UpdateAlias(nullptr, target.GetFSRef(), GetAliasHandle());
}

void SAliasHandleBase::Update(const CFileSpec& from, const CFileSpec& target) {
    UpdateAlias(&from.GetFSRef(), target.GetFSRef(), GetAliasHandle());
}

void SAliasHandleBase::Resolve(CFileSpec& target, bool* wasChanged) const {
    FailOSErr(ResolveNoThrow(target, wasChanged));
}

void SAliasHandleBase::Resolve(const CFileSpec& from, CFileSpec& target, bool* wasChanged) const {
    FailOSErr(ResolveNoThrow(from, target, wasChanged));
}

OSStatus SAliasHandleBase::ResolveNoThrow(CFileSpec& target, bool* wasChanged) const {
    return ResolveAlias(nullptr, GetAliasHandle(), target, wasChanged);
}

OSStatus SAliasHandleBase::ResolveNoThrow(const CFileSpec& from, CFileSpec& target,
                                          bool* wasChanged) const {
    return ResolveAlias(&from.GetFSRef(), GetAliasHandle(), target, wasChanged);
}

void SAliasHandleBase::ResolveFast(CFileSpec& target, bool* wasChanged) {
    FailOSErr(ResolveFastNoThrow(target, wasChanged));
}

OSStatus SAliasHandleBase::ResolveFastNoThrow(CFileSpec& target, bool* wasChanged) {
    FSRef ref;
    SInt16 count = 1;
    Boolean needsUpdate = false;
    const OSStatus status = FSMatchAliasNoUI(nullptr, kARMNoUI | kARMSearch, GetAliasHandle(),
                                             &count, &ref, &needsUpdate, nullptr, nullptr);
    if (status != noErr) return status;
    target = CFileSpec(ref);
    if (wasChanged != nullptr) *wasChanged = needsUpdate != 0;
    return noErr;
}

void SAliasHandleBase::FollowFinderAlias(CFileSpec& target, bool logon, bool* wasChanged) const {
    FailOSErr(FollowFinderAliasNoThrow(target, logon, wasChanged));
}

OSStatus SAliasHandleBase::FollowFinderAliasNoThrow(CFileSpec& target, bool logon,
                                                    bool* wasChanged) const {
    FSRef ref;
    Boolean changed = false;
    const OSStatus status = FSFollowFinderAlias(nullptr, GetAliasHandle(), logon, &ref, &changed);
    if (status != noErr) return status;
    target = CFileSpec(ref);
    if (wasChanged != nullptr) *wasChanged = changed != 0;
    return noErr;
}

CFileSpec SAliasHandleBase::GetFileSpec() const {
    CFileSpec target;
    Resolve(target, nullptr);
    return target;
}

TCLString SAliasHandleBase::GetAliasName() const {
    HFSUniStr255 name;
    FailOSErr(FSCopyAliasInfo(GetAliasHandle(), &name, nullptr, nullptr, nullptr, nullptr));
    return TCLString(name.unicode, name.length);
}

TCLString SAliasHandleBase::GetResolvedName() const {
    TCLString name;
    GetFileSpec().GetName(name);
    return name;
}

TCLString SAliasHandleBase::GetName() const {
    try {
        return GetResolvedName();
    } catch (...) {
        return GetAliasName();
    }
}

bool SAliasHandleBase::operator==(const CFileSpec& spec) const {
    CFileSpec target;
    return ResolveNoThrow(target, nullptr) == noErr &&
           FSCompareFSRefs(&target.GetFSRef(), &spec.GetFSRef()) == noErr;
}

bool SAliasHandleBase::operator==(const SAliasHandleBase& other) const {
    if (const auto ids = TargetNodeIDs(*this, other)) return ids->own == ids->other;
    return GetAliasName() == other.GetAliasName();
}

bool SAliasHandleBase::operator<(const SAliasHandleBase& other) const {
    if (const auto ids = TargetNodeIDs(*this, other))
        return static_cast<SInt32>(ids->own) < static_cast<SInt32>(ids->other);
    return GetAliasName() < other.GetAliasName();
}
