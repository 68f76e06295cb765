// Reading file identities out of descriptors.
#include "Libraries/MacToolboxLib/CAEDesc/CAEDescReader.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>

#include "Libraries/MacToolboxLib/CAEDesc/CAEDesc.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/MacToolboxLib/TBUtilities/SCoreFoundation.h"
#include "Libraries/MacToolboxLib/TCLString/TCLString.h"
#include "fileurl/FileURL.h"

void CAEDescReader::FailOSErr(OSStatus status) const {
    ::FailOSErr(status);
}

void CAEDescReader::GetFileSpec(FSRef* ref) const {
    if (Is(typeFSRef)) {
        if (AEGetDescDataSize(&mDesc) != sizeof *ref) FailOSErr(errAECorruptData);
        FailOSErr(AEGetDescData(&mDesc, ref, sizeof *ref));
    } else {
        CAEDesc coerced;
        CoerceTo(typeFSRef, coerced);
        coerced.GetFileSpec(ref);
    }
}

void CAEDescReader::GetFileSpec(FSRef* ref, HFSUniStr255* name) const {
    if (Is(typeFSRef)) {
        GetFileSpec(ref);
        FailOSErr(FSGetCatalogInfo(ref, kFSCatInfoNone, nullptr, name, nullptr, nullptr));
        return;
    }
    const SCoreFoundation<CFURLRef> url(GetCFURL());
    const SCoreFoundation<CFURLRef> parent(
        CFURLCreateCopyDeletingLastPathComponent(kCFAllocatorDefault, url));
    FailNIL(parent);
    if (!CFURLGetFSRef(parent, ref)) FailOSErr(fnfErr);
    const SCoreFoundation<CFStringRef> leaf(CFURLCopyLastPathComponent(url));
    FailNIL(leaf);
    FromCFString(leaf, *name);
    // A colon in a path is a slash in a file's name.
    std::replace(name->unicode, name->unicode + name->length, UniChar{':'}, UniChar{'/'});
}

CFURLRef CAEDescReader::GetCFURL() const {
    const bool holdsURL =
        Is(typeFileURL) || Is(typeChar) || Is(typeStyledText) || Is(typeUnicodeText);
    if (!holdsURL) {
        CAEDesc coerced;
        CoerceTo(typeFileURL, coerced);
        return coerced.GetCFURL();
    }
    CFURLRef url = nullptr;
    FailOSErr(FURLCreateFromAEDesc(kCFAllocatorDefault, &mDesc, &url));
    return url;
}

void CAEDescReader::CoerceTo(DescType type, CAEDesc& out) const {
    out.CoerceTo(&mDesc, type);
}
