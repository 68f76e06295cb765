// Making the files that URLs name.
#include <CoreServices/Resources.h>

#include "fileurl/FileURL.h"
#include "fileurl/FileURLSupport.h"

namespace {

using namespace furl;

using CreateFile = OSErr (*)(const FSRef& folder, const std::u16string& name,
                             FSCatalogInfoBitmap whichInfo, const FSCatalogInfo* info,
                             FSRef* newRef);

const UniChar* UniChars(const std::u16string& name) {
    return reinterpret_cast<const UniChar*>(name.data());
}

OSErr CreatePlain(const FSRef& folder, const std::u16string& name, FSCatalogInfoBitmap whichInfo,
                  const FSCatalogInfo* info, FSRef* newRef) {
    return FSCreateFileUnicode(&folder, name.size(), UniChars(name), whichInfo, info, newRef,
                               nullptr);
}

OSErr CreateWithFork(const FSRef& folder, const std::u16string& name, FSCatalogInfoBitmap whichInfo,
                     const FSCatalogInfo* info, FSRef* newRef) {
    FSCreateResFile(&folder, name.size(), UniChars(name), whichInfo, info, newRef, nullptr);
    return ResError();
}

OSStatus CreateAt(CFURLRef url, FSCatalogInfoBitmap whichInfo, const FSCatalogInfo* info,
                  FSRef* newRef, CreateFile create) {
    if (url == nullptr || (info == nullptr && whichInfo != 0)) return paramErr;
    return Guarded([&]() -> OSStatus {
        const auto absolute = CFRef<CFURLRef>::Adopt(CFURLCopyAbsoluteURL(url));
        if (!absolute) return memFullErr;
        const auto parent = CFRef<CFURLRef>::Adopt(
            CFURLCreateCopyDeletingLastPathComponent(kCFAllocatorDefault, absolute.get()));
        const auto leaf = CFRef<CFStringRef>::Adopt(CFURLCopyLastPathComponent(absolute.get()));
        // The root folder is in no other.
        if (!parent || !leaf) return bdNamErr;
        FSRef folder;
        if (!CFURLGetFSRef(parent.get(), &folder)) return fnfErr;
        FSRef made;
        const OSErr status =
            create(folder, SwapSeparators(Units(leaf.get())), whichInfo, info, &made);
        if (status == noErr && newRef != nullptr) *newRef = made;
        return status;
    });
}

}  // namespace

OSStatus FURLCreateFileWithCFURL(CFURLRef url, FSCatalogInfoBitmap whichInfo,
                                 const FSCatalogInfo* info, FSRef* newRef) {
    return CreateAt(url, whichInfo, info, newRef, CreatePlain);
}

OSStatus FURLCreateResFileWithCFURL(CFURLRef url, FSCatalogInfoBitmap whichInfo,
                                    const FSCatalogInfo* info, FSRef* newRef) {
    return CreateAt(url, whichInfo, info, newRef, CreateWithFork);
}
