// CResFile: operations that change the file's resources.
#include <CoreServices/MacErrors.h>

#include "Libraries/MacToolboxLib/TBUtilities/Assertions.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/TCLClasses/CResFile.h"
#include "Libraries/TCLClasses/CResFileSupport.h"

namespace {

constexpr const char* kUnit = kCResFileUnit;

}  // namespace

// The platform's Resource Manager writes nothing in this version: each operation checks its
// arguments as it will, then says so.

void CResFile::CreateNew(OSType /*creator*/, OSType /*fileType*/) {
    TB_ASSERT(kUnit, !IsOpen());
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    TB_ASSERT(kUnit, !mResolved);
    FailOSErr(unimpErr);
}

void CResFile::CreateNewDataFork(OSType /*creator*/, OSType /*fileType*/) {
    TB_ASSERT(kUnit, !IsOpen());
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    TB_ASSERT(kUnit, !mResolved);
    FailOSErr(unimpErr);
}

void CResFile::Update() {
    TB_ASSERT(kUnit, IsOpen());
    FailOSErr(unimpErr);
}

void CResFile::StoreData(ResType /*type*/, SInt16 /*id*/, const char* /*data*/, Size /*size*/,
                         const unsigned char* /*name*/, SInt32 /*attributes*/) {
    TB_ASSERT(kUnit, IsOpen());
    FailOSErr(unimpErr);
}

void CResFile::StoreResource(ResType /*type*/, SInt16 /*id*/, Handle rData,
                             const unsigned char* /*name*/, SInt32 /*attributes*/) {
    TB_ASSERT(kUnit, IsOpen());
    TB_ASSERT(kUnit, rData);
    FailOSErr(unimpErr);
}

void CResFile::DeleteResource(ResType /*type*/, SInt16 /*id*/) {
    TB_ASSERT(kUnit, IsOpen());
    FailOSErr(unimpErr);
}
