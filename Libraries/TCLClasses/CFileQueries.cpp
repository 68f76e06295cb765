// CFile: what a file is called and what the catalog says of it.
#include <CoreServices/MacErrors.h>
#include <unistd.h>

#include <cerrno>

#include "Libraries/MacToolboxLib/TBUtilities/Assertions.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/TCLClasses/CFile.h"
#include "fsextensions/FSExtensions.h"

namespace {

constexpr char kUnit[] = "Libraries/TCLClasses/CFile";
constexpr SInt32 kNoWriteAccess = 4;

}  // namespace

bool CFile::IsLocked() const {
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    TB_ASSERT(kUnit, ExistsOnDisk());
    return FSCheckLock(&GetFileSpec().GetFSRef()) != noErr;
}

bool CFile::IsStationaryPad() const {
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    TB_ASSERT(kUnit, ExistsOnDisk());
    return GetFileSpec().IsStationaryPad();
}

bool CFile::ExistsOnDisk() const {
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    try {
        FSRef ref;
        mFileDesc.GetFileSpec(&ref);
        return FSRefValid(&ref);
    } catch (...) {
        return false;
    }
}

bool CFile::IsFileInTrash() const {
    return ExistsOnDisk() && GetFileSpec().IsInTrash();
}

void CFile::GetName(TCLString& name) const {
    HFSUniStr255 record;
    GetName(record);
    name = ToTCLString(record);
}

void CFile::GetName(SCoreFoundation<CFStringRef>& name) const {
    HFSUniStr255 record;
    GetName(record);
    name = ToCFString(record);
}

void CFile::GetName(SCoreFoundation<CFMutableStringRef>& name) const {
    HFSUniStr255 record;
    GetName(record);
    name = ToCFMutableString(record);
}

void CFile::GetName(HFSUniStr255& name) const {
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    FSRef parent;
    GetFileSpec(parent, name);
}

void CFile::GetMacFileInfo(FInfo& info) const {
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    FailOSErr(FSGetFinderInfo(&GetFileSpec().GetFSRef(), &info, nullptr, nullptr));
}

void CFile::SetMacFileInfo(FInfo& info) const {
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    FailOSErr(FSSetFinderInfo(&GetFileSpec().GetFSRef(), &info, nullptr));
}

CFileSpec CFile::GetFileSpec() const {
    FSRef ref;
    mFileDesc.GetFileSpec(&ref);
    return CFileSpec(ref);
}

OSType CFile::GetFileType() const {
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    TB_ASSERT(kUnit, ExistsOnDisk());
    OSType type = 0;
    GetFileTypeAndCreator(&GetFileSpec().GetFSRef(), &type, nullptr);
    return type;
}

OSType CFile::GetCreator() const {
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    TB_ASSERT(kUnit, ExistsOnDisk());
    OSType creator = 0;
    GetFileTypeAndCreator(&GetFileSpec().GetFSRef(), nullptr, &creator);
    return creator;
}

FSVolumeRefNum CFile::GetVolumeNumber() const {
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    return GetFileSpec().GetVolume();
}

void CFile::GetFileSpec(FSRef& ref) const {
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    mFileDesc.GetFileSpec(&ref);
}

void CFile::GetFileSpec(FSRef* ref) const {
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    mFileDesc.GetFileSpec(ref);
}

void CFile::GetFileSpec(FSRef& parent, HFSUniStr255& name) const {
    GetFileSpec(&parent, &name);
}

void CFile::GetFileSpec(FSRef* parent, HFSUniStr255* name) const {
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    mFileDesc.GetFileSpec(parent, name);
    // A reference names the object itself; the folder around it is one step up.
    if (mFileDesc.Is(typeFSRef)) *parent = CFileSpec(*parent).GetParent().GetFSRef();
}

void CFile::GetFileSpec(CAEDesc& out, bool asURL) const {
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    out = mFileDesc;
    if (asURL && !out.Is(typeFileURL)) out.CoerceTo(typeFileURL);
}

CFileSpec CFile::GetParent() const {
    FSRef parent;
    HFSUniStr255 name;
    GetFileSpec(parent, name);
    return CFileSpec(parent);
}

SInt32 CFile::GetAccessRights() const {
    const std::string path = GetFileSpec().GetPath();
    return access(path.c_str(), W_OK) != 0 && errno == EACCES ? kNoWriteAccess : 0;
}

UInt16 CFile::GetPermissions() const {
    return GetFileSpec().GetPermissions();
}

void CFile::SetPermissions(UInt16 mode) {
    GetFileSpec().SetPermissions(mode);
}

UTCDateTime CFile::GetModificationDate() const {
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    return GetFileSpec().GetModificationDate();
}

UTCDateTime CFile::GetCreationDate() const {
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    return GetFileSpec().GetCreationDate();
}
