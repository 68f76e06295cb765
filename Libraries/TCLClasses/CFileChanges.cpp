// CFile: operations that change the file on disk.
#include <CoreServices/MacErrors.h>

#include "Libraries/MacToolboxLib/TBUtilities/Assertions.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/TCLClasses/CFile.h"
#include "fsextensions/FSExtensions.h"

namespace {

constexpr char kUnit[] = "Libraries/TCLClasses/CFile";

}  // namespace

// The platform's File Manager creates, deletes and renames nothing in this version: the operations
// that would check their arguments as they will, then say so.

AliasHandle CFile::GetAlias() const {
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    TB_ASSERT(kUnit, ExistsOnDisk());
    FailOSErr(unimpErr);
    return nullptr;
}

void CFile::CreateNew(OSType /*creator*/, OSType /*fileType*/) {
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    TB_ASSERT(kUnit, mFileDesc.Is(typeFileURL));
    TB_ASSERT(kUnit, !IsOpen());
    TB_ASSERT(kUnit, !ExistsOnDisk());
    TB_ASSERT(kUnit, !mResolved);
    FailOSErr(unimpErr);
}

void CFile::ThrowOut() {
    TB_ASSERT(kUnit, ExistsOnDisk());
    FailOSErr(unimpErr);
}

void CFile::ChangeName(unsigned char* /*pascalName*/) {
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    FailOSErr(unimpErr);
}

void CFile::MakeInvisible() {
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    FailOSErr(FSChangeFinderFlags(&GetFileSpec().GetFSRef(), true, kIsInvisible));
}

void CFile::MakeVisible() {
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    FailOSErr(FSChangeFinderFlags(&GetFileSpec().GetFSRef(), false, kIsInvisible));
}
