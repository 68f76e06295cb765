// The forms in which a descriptor names a file.
#include <CoreServices/MacErrors.h>

#include "Libraries/MacToolboxLib/CAEDesc/CAEDesc.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/MacToolboxLib/TBUtilities/SCoreFoundation.h"
#include "Libraries/MacToolboxLib/TBUtilities/SHandle.h"
#include "fileurl/FileURL.h"

void CAEDesc::SetAlias(AliasHandle alias) {
    Set(typeAlias, reinterpret_cast<Handle>(alias));
}

void CAEDesc::SetAlias(const FSRef* ref) {
    Clear();
    AliasHandle alias = nullptr;
    FailOSErr(FSNewAliasMinimal(ref, &alias));
    const SHandle owner(reinterpret_cast<Handle>(alias));
    SetAlias(alias);
}

void CAEDesc::SetFSSpec(const FSRef* ref) {
    Clear();
    FSSpec spec;
    FailOSErr(FSGetCatalogInfo(ref, kFSCatInfoNone, nullptr, nullptr, &spec, nullptr));
    Set(typeFSS, reinterpret_cast<const char*>(&spec), sizeof spec);
}

void CAEDesc::SetCFURL(CFURLRef url) {
    Clear();
    FailOSErr(FURLCreateDescFromCFURL(url, &mDesc));
}

void CAEDesc::SetCFURL(const FSRef* ref) {
    Clear();
    const SCoreFoundation<CFURLRef> url(CFURLCreateFromFSRef(kCFAllocatorDefault, ref));
    FailNIL(url);
    SetCFURL(url.Get());
}

void CAEDesc::SetCFURL(const FSRef* parent, const HFSUniStr255* name) {
    Clear();
    CFURLRef url = nullptr;
    FailOSErr(FURLCreateFromParentAndName(kCFAllocatorDefault, parent, name, &url));
    const SCoreFoundation<CFURLRef> holder(url);
    SetCFURL(url);
}

void CAEDesc::SetCFURL(const NavReplyRecord* reply) {
    Clear();
    CFURLRef url = nullptr;
    FailOSErr(FURLCreateFromNavReply(kCFAllocatorDefault, reply, &url));
    const SCoreFoundation<CFURLRef> holder(url);
    SetCFURL(url);
}

void CAEDesc::SetFileSpec(const FSRef* ref, DescType type) {
    switch (type) {
        case typeFSRef:
            Set(typeFSRef, reinterpret_cast<const char*>(ref), sizeof *ref);
            break;
        case typeFSS:
            SetFSSpec(ref);
            break;
        case typeAlias:
            SetAlias(ref);
            break;
        case typeChar:
        case 'ctxt':
            SetPath(ref);
            break;
        case typeStyledText:
        case typeIntlText:
        case typeUTF8Text:
        case typeUnicodeText:
            SetPath(ref);
            CoerceTo(type);
            break;
        default:
            SetCFURL(ref);
            break;
    }
}

void CAEDesc::SetPath(const FSRef* ref) {
    Clear();
    const SCoreFoundation<CFURLRef> url(CFURLCreateFromFSRef(kCFAllocatorDefault, ref));
    FailNIL(url);
    SCoreFoundation<CFStringRef> path(CFURLCopyFileSystemPath(url, kCFURLHFSPathStyle));
    FailNIL(path);
    if (CFURLHasDirectoryPath(url) && !CFStringHasSuffix(path, CFSTR(":"))) {
        path = CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, CFSTR("%@:"), path.Get());
        FailNIL(path);
    }
    SetString(path);
}
