// URLs of files that are named by their folder, and need not exist.
#include <algorithm>
#include <iterator>
#include <string_view>

#include "fileurl/FileURL.h"
#include "fileurl/FileURLSupport.h"

namespace {

using namespace furl;

/// Null when it cannot be made.
CFURLRef CreateInFolder(CFAllocatorRef allocator, const FSRef& folder, const std::u16string& name,
                        bool isFolder) {
    const auto parent = CFRef<CFURLRef>::Adopt(CFURLCreateFromFSRef(allocator, &folder));
    std::u16string component = name;
    std::replace(component.begin(), component.end(), u'/', u':');
    const auto leaf = StringOf(allocator, component);
    if (!parent || !leaf) return nullptr;
    return CFURLCreateCopyAppendingPathComponent(allocator, parent.get(), leaf.get(), isFolder);
}

/// Copies a Pascal string; one of over 255 bytes cannot be.
void PutPascal(std::string_view text, Str255 target) {
    target[0] = static_cast<unsigned char>(text.size());
    std::copy(text.begin(), text.end(), target + 1);
}

CFURLRef CreateFromSpec(CFAllocatorRef allocator, const FSSpec& spec) {
    if (spec.name[0] >= sizeof spec.name) return nullptr;
    std::string_view name(reinterpret_cast<const char*>(spec.name) + 1, spec.name[0]);
    const bool isFolder = name.ends_with(':');
    if (isFolder) name.remove_suffix(1);
    const std::size_t leafStart = name.rfind(':') + 1;  // npos + 1 is 0
    if (leafStart == name.size()) return nullptr;
    std::string above(name.substr(0, leafStart == 0 ? 0 : leafStart - 1));
    // A path below a folder begins with ":"; without, its first name is a volume's.
    if (above.find(':') != above.npos && !above.starts_with(':')) above.insert(0, 1, ':');
    Str255 text;
    PutPascal(above, text);
    FSSpec folder;
    FSRef folderRef;
    if (FSMakeFSSpec(spec.vRefNum, spec.parID, text, &folder) != noErr ||
        FSpMakeFSRef(&folder, &folderRef) != noErr)
        return nullptr;
    PutPascal(name.substr(leafStart), text);
    const auto leaf = CFRef<CFStringRef>::Adopt(
        CFStringCreateWithPascalString(allocator, text, CFStringGetSystemEncoding()));
    return leaf ? CreateInFolder(allocator, folderRef, Units(leaf.get()), isFolder) : nullptr;
}

}  // namespace

OSStatus FURLCreateFromParentAndName(CFAllocatorRef allocator, const FSRef* parent,
                                     const HFSUniStr255* name, CFURLRef* url) {
    if (url == nullptr) return paramErr;
    *url = nullptr;
    if (parent == nullptr || name == nullptr) return paramErr;
    if (name->length > std::size(name->unicode)) return cfStringConversionErr;
    return Guarded([&]() -> OSStatus {
        const std::u16string text(name->unicode, name->unicode + name->length);
        *url = CreateInFolder(allocator, *parent, text, false);
        return *url == nullptr ? cfStringConversionErr : noErr;
    });
}

OSStatus FURLCreateFromNavReply(CFAllocatorRef allocator, const NavReplyRecord* reply,
                                CFURLRef* url) {
    if (url == nullptr) return paramErr;
    *url = nullptr;
    if (reply == nullptr) return paramErr;
    OwnedDesc item;
    AEKeyword keyword = 0;
    const OSStatus status = AEGetNthDesc(&reply->selection, 1, typeFSRef, &keyword, &item.desc);
    if (status != noErr) return status;
    FSRef folder;
    if (!ReadDesc(&item.desc, folder)) return errAECoercionFail;
    HFSUniStr255 name{};
    const CFIndex length =
        reply->saveFileName == nullptr ? 0 : CFStringGetLength(reply->saveFileName);
    if (length == 0 || length > static_cast<CFIndex>(std::size(name.unicode)))
        return cfStringConversionErr;
    name.length = static_cast<UInt16>(length);
    CFStringGetCharacters(reply->saveFileName, CFRangeMake(0, length), name.unicode);
    return FURLCreateFromParentAndName(allocator, &folder, &name, url);
}

OSStatus FURLCreateFromFSSpec(CFAllocatorRef allocator, const FSSpec* spec, CFURLRef* url) {
    if (url == nullptr) return paramErr;
    *url = nullptr;
    if (spec == nullptr) return paramErr;
    return Guarded([&]() -> OSStatus {
        *url = CreateFromSpec(allocator, *spec);
        return *url == nullptr ? fnfErr : noErr;
    });
}
