// CFile: operations that change the file on disk.
#include <CoreServices/MacErrors.h>

#include "Libraries/MacToolboxLib/TBUtilities/Assertions.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/TCLClasses/CFile.h"
#include "fsextensions/FSExtensions.h"

namespace {

constexpr char kUnit[] = "Libraries/TCLClasses/CFile";

}  // namespace

AliasHandle CFile::GetAlias() const {
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    TB_ASSERT(kUnit, ExistsOnDisk());
    const CFileSpec spec = GetFileSpec();
    AliasHandle alias = nullptr;
    FailOSErr(FSNewAlias(nullptr, &spec.GetFSRef(), &alias));
    return alias;
}

void CFile::CreateNew(OSType creator, OSType fileType) {
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    TB_ASSERT(kUnit, mFileDesc.Is(typeFileURL));
    TB_ASSERT(kUnit, !IsOpen());
    TB_ASSERT(kUnit, !ExistsOnDisk());
    TB_ASSERT(kUnit, !mResolved);
    Close();
    FSRef parent;
    HFSUniStr255 name;
    GetFileSpec(parent, name);
    FSCatalogInfo info{};
    info.finderInfo.fdType = fileType;
    info.finderInfo.fdCreator = creator;
    // The identity stays the URL: whoever made the file goes on naming it by folder and name.
    FailOSErr(FSCreateFileUnicode(&parent, name.length, name.unicode, kFSCatInfoFinderInfo, &info,
                                  nullptr, nullptr));
}

void CFile::ThrowOut() {
    TB_ASSERT(kUnit, ExistsOnDisk());
    Close();
    const CFileSpec spec = GetFileSpec();
    OSStatus status = FSDeleteObject(&spec.GetFSRef());
    if (status == fBsyErr) status = FSDeleteContainer(&spec.GetFSRef());
    FailOSErr(status);
}

void CFile::ChangeName(unsigned char* pascalName) {
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    HFSUniStr255 name;
    FailOSErr(HFSNameGetUnicodeName(pascalName, kTextEncodingUnknown, &name));
    const CFileSpec spec = GetFileSpec();
    FSRef renamed;
    FailOSErr(FSRenameUnicode(&spec.GetFSRef(), name.length, name.unicode, 0, &renamed));
    mFileDesc.Set(typeFSRef, reinterpret_cast<const char*>(&renamed), sizeof renamed);
}

void CFile::MakeInvisible() {
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    FailOSErr(FSChangeFinderFlags(&GetFileSpec().GetFSRef(), true, kIsInvisible));
}

void CFile::MakeVisible() {
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    FailOSErr(FSChangeFinderFlags(&GetFileSpec().GetFSRef(), false, kIsInvisible));
}
