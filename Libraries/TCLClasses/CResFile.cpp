// CResFile: opening and closing, from a fork, a map in the data fork or a bundle.
#include "Libraries/TCLClasses/CResFile.h"

#include <CoreServices/MacErrors.h>

#include <utility>

#include "Libraries/MacToolboxLib/TBUtilities/Assertions.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/MacToolboxLib/TBUtilities/SCoreFoundation.h"
#include "Libraries/TCLClasses/CResFileSupport.h"

namespace {

constexpr const char* kUnit = kCResFileUnit;
constexpr ResFileRefNum kNotOpened = -1;

/// A map in the data fork, always read-only; kNotOpened when there is none.
ResFileRefNum OpenDataFork(const FSRef& ref) {
    HFSUniStr255 name;
    FailOSErr(FSGetDataForkName(&name));
    ResFileRefNum refNum = kNotOpened;
    const OSErr status = FSOpenResourceFile(&ref, name.length, name.unicode, fsRdPerm, &refNum);
    return status == noErr ? refNum : kNotOpened;
}

SCoreFoundation<CFBundleRef> BundleOf(const FSRef& ref) {
    const SCoreFoundation<CFURLRef> url(CFURLCreateFromFSRef(kCFAllocatorDefault, &ref));
    if (url == nullptr) return SCoreFoundation<CFBundleRef>();
    return SCoreFoundation<CFBundleRef>(CFBundleCreate(kCFAllocatorDefault, url));
}

}  // namespace

CResFile::CResFile() : mRefNum(0), mBundle(nullptr) {}

CResFile::~CResFile() {
    Close();
}

bool CResFile::IsOpen() const {
    return mRefNum != 0;
}

bool CResFile::IsBundleResourceFile() const {
    return mRefNum != 0 && mBundle != nullptr;
}

void CResFile::Open(SInt8 permission) {
    TB_ASSERT(kUnit, !IsOpen());
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    try {
        Close();
        ResolveFileAlias();
    } catch (...) {
        // An alias that cannot be resolved is opened as the file that it is.
    }
    FSRef ref;
    mFileDesc.GetFileSpec(&ref);
    ResFileRefNum refNum = FSOpenResFile(&ref, permission);
    if (refNum == kNotOpened) refNum = OpenDataFork(ref);
    if (refNum == kNotOpened) {
        SCoreFoundation<CFBundleRef> bundle = BundleOf(ref);
        if (bundle != nullptr) refNum = CFBundleOpenBundleResourceMap(bundle);
        if (refNum == kNotOpened) FailOSErr(fnfErr);
        mBundle = bundle.Release();
        FailResError();
    }
    mRefNum = refNum;
}

void CResFile::Close() {
    if (mRefNum > 0) {
        if (mBundle == nullptr) {
            CloseResFile(mRefNum);
        } else {
            CFBundleCloseBundleResourceMap(mBundle, mRefNum);
            CFRelease(std::exchange(mBundle, nullptr));
        }
    }
    mRefNum = 0;
}

void CResFile::MakeCurrent() {
    TB_ASSERT(kUnit, IsOpen());
    UseResFile(mRefNum);
}

bool CResFile::HasResFork() {
    if (IsOpen()) return true;
    if (!ExistsOnDisk()) return false;
    const CFileSpec spec = GetFileSpec();
    FSCatalogInfo info;
    const OSStatus status =
        FSGetCatalogInfo(&spec.GetFSRef(), kFSCatInfoRsrcSizes, &info, nullptr, nullptr, nullptr);
    if (status != fnfErr) {
        FailOSErr(status);
        return info.rsrcLogicalSize != 0;
    }
    // The catalog has no fork sizes of a folder, which may be a bundle with a resource map.
    const SCoreFoundation<CFBundleRef> bundle = BundleOf(spec.GetFSRef());
    if (bundle == nullptr) return false;
    const ResFileRefNum refNum = CFBundleOpenBundleResourceMap(bundle);
    if (refNum == kNotOpened) return false;
    CFBundleCloseBundleResourceMap(bundle, refNum);
    return true;
}
