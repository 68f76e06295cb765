// File URL descriptors.
#include "Libraries/MacToolboxLib/CAEDesc/CAEDesc.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/MacToolboxLib/TBUtilities/SCoreFoundation.h"
#include "fileurl/FileURL.h"

void CAEDesc::SetCFURL(CFURLRef url) {
    Free();
    FailOSErr(FURLCreateDescFromCFURL(url, &mDesc));
}

void CAEDesc::SetCFURL(const FSRef* ref) {
    Free();
    const SCoreFoundation<CFURLRef> url(CFURLCreateFromFSRef(kCFAllocatorDefault, ref));
    FailNIL(url);
    SetCFURL(url.Get());
}

void CAEDesc::SetCFURL(const FSRef* parent, const HFSUniStr255* name) {
    Free();
    CFURLRef url = nullptr;
    FailOSErr(FURLCreateFromParentAndName(kCFAllocatorDefault, parent, name, &url));
    const SCoreFoundation<CFURLRef> holder(url);
    SetCFURL(url);
}
