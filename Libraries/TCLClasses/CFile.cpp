// CFile: construction, specifying and alias resolution.
#include "Libraries/TCLClasses/CFile.h"

#include <CoreServices/Folders.h>
#include <CoreServices/MacErrors.h>

#include "Libraries/MacToolboxLib/TBUtilities/Assertions.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"

namespace {

constexpr char kUnit[] = "Libraries/TCLClasses/CFile";
constexpr char kTempFilePrefix[] = "Olk TempFile ";

HFSUniStr255 ToName(const TCLString& string) {
    HFSUniStr255 name;
    FromTCLString(string, name);
    return name;
}

HFSUniStr255 ToName(CFStringRef string) {
    HFSUniStr255 name;
    FromCFString(string, name);
    return name;
}

CFileSpec KnownFolder(FSVolumeRefNum vRefNum, OSType folderType) {
    FSRef folder;
    FailOSErr(FSFindFolder(vRefNum, folderType, kCreateFolder, &folder));
    return CFileSpec(folder);
}

}  // namespace

CFile::CFile() : mResolved(false), mInteractive(false) {}

CFile::~CFile() = default;

void CFile::Specify(const CFile* other, bool asURL) {
    CAEDesc desc;
    other->GetFileSpec(desc, asURL);
    Specify(static_cast<const CAEDescReader&>(desc), true);
}

void CFile::Specify(const CFileSpec& spec, bool /*interactive*/) {
    mFileDesc.Set(typeFSRef, reinterpret_cast<const char*>(&spec.GetFSRef()), sizeof(FSRef));
    mResolved = false;
    mInteractive = true;
}

void CFile::Specify(const std::string& path, bool interactive) {
    FSRef ref;
    Boolean isDirectory = false;
    FailOSErr(FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), &ref, &isDirectory));
    TB_ASSERT(kUnit, !isDirectory);
    Specify(CFileSpec(ref), interactive);
}

void CFile::Specify(const CFileSpec& folder, CFStringRef theName, bool interactive) {
    TB_ASSERT(kUnit, theName);
    Specify(folder, ToName(theName), interactive);
}

void CFile::Specify(const CFileSpec& folder, const HFSUniStr255& name, bool interactive) {
    mFileDesc.SetCFURL(&folder.GetFSRef(), &name);
    mResolved = false;
    mInteractive = interactive;
}

void CFile::Specify(const CFileSpec& folder, const TCLString& name, bool interactive) {
    const HFSUniStr255 record = ToName(name);
    mFileDesc.SetCFURL(&folder.GetFSRef(), &record);
    mResolved = false;
    mInteractive = interactive;
}

void CFile::Specify(const CAEDescReader& desc, bool /*interactive*/) {
    mFileDesc = desc;
    mResolved = false;
    mInteractive = true;
}

void CFile::SpecifyInKnownFolder(FSVolumeRefNum vRefNum, OSType folderType, const TCLString& name,
                                 bool interactive) {
    Specify(KnownFolder(vRefNum, folderType), name, interactive);
}

void CFile::SpecifyInKnownFolder(FSVolumeRefNum vRefNum, OSType folderType,
                                 const HFSUniStr255& name, bool interactive) {
    Specify(KnownFolder(vRefNum, folderType), name, interactive);
}

void CFile::SpecifyInKnownFolder(FSVolumeRefNum vRefNum, OSType folderType, CFStringRef name,
                                 bool interactive) {
    Specify(KnownFolder(vRefNum, folderType), name, interactive);
}

void CFile::SpecifyTempFile(FSVolumeRefNum vRefNum, const TCLString& name) {
    if (!name.empty()) {
        SpecifyInKnownFolder(vRefNum, kTemporaryFolderType, name, true);
        return;
    }
    const TCLString made = ToTCLString(kTempFilePrefix, kCFStringEncodingASCII) +
                           ToTCLString(static_cast<SInt32>(TickCount()));
    SpecifyInKnownFolder(vRefNum, kTemporaryFolderType, made, true);
}

void CFile::SpecifyTempFile(FSVolumeRefNum vRefNum, const HFSUniStr255& name) {
    SpecifyInKnownFolder(vRefNum, kTemporaryFolderType, name, true);
}

void CFile::SpecifyTempFile(FSVolumeRefNum vRefNum, CFStringRef name) {
    SpecifyInKnownFolder(vRefNum, kTemporaryFolderType, ToName(name), true);
}

void CFile::ResolveFileAlias() {
    ResolveFileAlias(mInteractive);
}

void CFile::ResolveFileAlias(bool interactive) {
    TB_ASSERT(kUnit, !IsOpen());
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    TB_ASSERT(kUnit, ExistsOnDisk());
    if (mResolved) return;
    FSRef ref;
    mFileDesc.GetFileSpec(&ref);
    Boolean isFolder = false;
    Boolean wasAliased = false;
    const UInt32 mountFlags = interactive ? 0 : kResolveAliasFileNoUI;
    FailOSErr(FSResolveAliasFileWithMountFlags(&ref, true, &isFolder, &wasAliased, mountFlags));
    if (wasAliased) {
        mFileDesc.Set(typeFSRef, reinterpret_cast<const char*>(&ref), sizeof ref);
    }
    if (isFolder) FailOSErr(paramErr);
    mResolved = true;
}

void CFile::Open(SInt8 /*permission*/) {}

void CFile::Close() {}

bool CFile::IsOpen() const {
    return false;
}
