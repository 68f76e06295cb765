// CFileSpec: making values, and questions to the catalog.
#include "Libraries/MacToolboxLib/TBUtilities/CFileSpec.h"

#include <CoreServices/Folders.h>
#include <CoreServices/MacErrors.h>

#include <cstring>

#include "Libraries/MacToolboxLib/TBUtilities/Assertions.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "fsextensions/FSExtensions.h"

namespace {

constexpr char kUnit[] = "Libraries/MacToolboxLib/TBUtilities";
constexpr UInt32 kPathBufferSize = 3000;

FSCatalogInfo CatalogInfo(const FSRef& ref, FSCatalogInfoBitmap which) {
    FSCatalogInfo info;
    FailOSErr(FSGetCatalogInfo(&ref, which, &info, nullptr, nullptr, nullptr));
    return info;
}

bool IsZeroed(const FSRef& ref) {
    static constexpr FSRef zeroed{};
    return std::memcmp(&ref, &zeroed, sizeof ref) == 0;
}

}  // namespace

CFileSpec::CFileSpec() : mRef{} {}

CFileSpec::CFileSpec(CFURLRef url) : mRef{} {
    if (url != nullptr && !CFURLGetFSRef(url, &mRef)) FailOSErr(fnfErr);
}

CFileSpec CFileSpec::Make(const TCLString& name) const {
    CFileSpec child;
    FailOSErr(FSMakeFSRefUnicode(&mRef, name.size(), name.data(), 0, &child.mRef));
    return child;
}

CFileSpec CFileSpec::Make(const char* name) const {
    return Make(ToTCLString(name, kCFStringEncodingUTF8));
}

bool CFileSpec::Exists(const TCLString& name) const {
    try {
        Make(name);
        return true;
    } catch (...) {
        return false;
    }
}

bool CFileSpec::Exists() const {
    return FSRefValid(&mRef);
}

CFileSpec CFileSpec::GetParent() const {
    CFileSpec parent;
    FailOSErr(FSGetParentRef(&mRef, &parent.mRef));
    return parent;
}

bool CFileSpec::IsFolder() const {
    Boolean isFolder = false;
    return FSGetFinderInfo(&mRef, nullptr, nullptr, &isFolder) == noErr && isFolder;
}

UInt16 CFileSpec::GetPermissions() const {
    return CatalogInfo(mRef, kFSCatInfoPermissions).permissions.mode;
}

void CFileSpec::SetPermissions(UInt16 mode) {
    FSCatalogInfo info = CatalogInfo(mRef, kFSCatInfoPermissions);
    info.permissions.mode = mode;
    FailOSErr(FSSetCatalogInfo(&mRef, kFSCatInfoPermissions, &info));
}

FinderInfo CFileSpec::GetFinderInfo() const {
    FinderInfo info;
    FailOSErr(FSGetFinderInfo(&mRef, &info, nullptr, nullptr));
    return info;
}

void CFileSpec::SetFinderInfo(const FinderInfo& info) {
    FailOSErr(FSSetFinderInfo(&mRef, &info, nullptr));
}

ExtendedFinderInfo CFileSpec::GetFinderXInfo() const {
    ExtendedFinderInfo info;
    FailOSErr(FSGetFinderInfo(&mRef, nullptr, &info, nullptr));
    return info;
}

void CFileSpec::SetFinderXInfo(const ExtendedFinderInfo& info) {
    FailOSErr(FSSetFinderInfo(&mRef, nullptr, &info));
}

FSVolumeRefNum CFileSpec::GetVolume() const {
    FSVolumeRefNum volume = 0;
    FailOSErr(FSGetVRefNum(&mRef, &volume));
    return volume;
}

UInt32 CFileSpec::GetNodeID() const {
    return CatalogInfo(mRef, kFSCatInfoNodeID).nodeID;
}

UTCDateTime CFileSpec::GetCreationDate() const {
    return CatalogInfo(mRef, kFSCatInfoCreateDate).createDate;
}

UTCDateTime CFileSpec::GetModificationDate() const {
    return CatalogInfo(mRef, kFSCatInfoContentMod).contentModDate;
}

std::string CFileSpec::GetPath() const {
    thread_local char buffer[kPathBufferSize];
    FailOSErr(FSRefMakePath(&mRef, reinterpret_cast<UInt8*>(buffer), sizeof buffer));
    return buffer;
}

bool CFileSpec::IsInTrash() const {
    if (IsZeroed(mRef)) return false;
    FSRef trash;
    if (FSFindFolder(GetVolume(), kTrashFolderType, kDontCreateFolder, &trash) != noErr)
        return false;
    FSRef ancestor = mRef;
    while (FSGetParentRef(&ancestor, &ancestor) == noErr) {
        if (FSCompareFSRefs(&ancestor, &trash) == noErr) return true;
    }
    return false;
}

bool CFileSpec::IsStationaryPad() const {
    TB_ASSERT(kUnit, !IsFolder());
    return (GetFinderInfo().fdFlags & kIsStationery) != 0;
}

bool CFileSpec::operator<(const CFileSpec& other) const {
    const UInt32 own = GetNodeID();
    return own < other.GetNodeID();
}
