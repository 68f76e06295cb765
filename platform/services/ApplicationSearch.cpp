// LSFindApplicationForInfo: a look through the Applications folders.
#include <CoreServices/LaunchServices.h>

#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFRef.h>
#include <CoreServices/Folders.h>
#include <CoreServices/MacErrors.h>

#include <array>

namespace osa {
namespace {

/// How many folders down from an Applications folder an application may lie.
constexpr int kDepth = 2;

struct Criteria {
    OSType creator;
    CFStringRef bundleID;
    CFStringRef name;
};

bool isSameText(CFStringRef first, CFStringRef second) {
    return CFStringCompare(first, second, kCFCompareCaseInsensitive) == kCFCompareEqualTo;
}

bool hasName(CFStringRef leaf, CFStringRef wanted) {
    if (isSameText(leaf, wanted)) return true;
    const auto complete = CFRef<CFStringRef>::Adopt(
        CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, CFSTR("%@.app"), wanted));
    return complete && isSameText(leaf, complete.get());
}

bool meets(CFURLRef url, CFStringRef leaf, const Criteria& criteria) {
    if (criteria.name != nullptr && !hasName(leaf, criteria.name)) return false;
    const auto bundle = CFRef<CFBundleRef>::Adopt(CFBundleCreate(kCFAllocatorDefault, url));
    if (!bundle) return false;
    UInt32 type = 0;
    UInt32 creator = 0;
    CFBundleGetPackageInfo(bundle.get(), &type, &creator);
    if (criteria.creator != 0 && creator != criteria.creator) return false;
    if (criteria.bundleID == nullptr) return true;
    const CFStringRef bundleID = CFBundleGetIdentifier(bundle.get());
    return bundleID != nullptr && isSameText(bundleID, criteria.bundleID);
}

/// Closes an iterator over a folder when it goes.
class FolderWalk {
  public:
    explicit FolderWalk(const FSRef& folder) {
        if (FSOpenIterator(&folder, kFSIterateFlat, &iterator_) != noErr) iterator_ = nullptr;
    }
    FolderWalk(const FolderWalk&) = delete;
    FolderWalk& operator=(const FolderWalk&) = delete;
    ~FolderWalk() {
        if (iterator_ != nullptr) FSCloseIterator(iterator_);
    }

    /// False after the last.
    bool next(FSRef& ref, HFSUniStr255& name, bool& isFolder) {
        ItemCount found = 0;
        FSCatalogInfo info;
        if (iterator_ == nullptr ||
            FSGetCatalogInfoBulk(iterator_, 1, &found, nullptr, kFSCatInfoNodeFlags, &info, &ref,
                                 nullptr, &name) != noErr ||
            found == 0)
            return false;
        isFolder = (info.nodeFlags & kFSNodeIsDirectoryMask) != 0;
        return true;
    }

  private:
    FSIterator iterator_ = nullptr;
};

/// The application's URL; none when there is none in the folder. Links are not followed, so that
/// the walk ends.
CFRef<CFURLRef> search(const FSRef& folder, const Criteria& criteria, int depth) {
    FolderWalk walk(folder);
    FSRef child;
    HFSUniStr255 name;
    bool isFolder = false;
    while (walk.next(child, name, isFolder)) {
        if (!isFolder) continue;
        const auto url = CFRef<CFURLRef>::Adopt(CFURLCreateFromFSRef(kCFAllocatorDefault, &child));
        const auto leaf = CFRef<CFStringRef>::Adopt(
            CFStringCreateWithCharacters(kCFAllocatorDefault, name.unicode, name.length));
        if (!url || !leaf) continue;
        if (CFStringHasSuffix(leaf.get(), CFSTR(".app"))) {
            if (meets(url.get(), leaf.get(), criteria)) return url;
        } else if (depth > 1) {
            if (CFRef<CFURLRef> found = search(child, criteria, depth - 1)) return found;
        }
    }
    return {};
}

}  // namespace
}  // namespace osa

OSStatus LSFindApplicationForInfo(OSType creator, CFStringRef bundleID, CFStringRef name,
                                  FSRef* ref, CFURLRef* url) {
    if (url != nullptr) *url = nullptr;
    if (creator == 0 && bundleID == nullptr && name == nullptr) return paramErr;
    for (const SInt16 domain : std::array<SInt16, 2>{kUserDomain, kLocalDomain}) {
        FSRef folder;
        if (FSFindFolder(domain, kApplicationsFolderType, kDontCreateFolder, &folder) != noErr)
            continue;
        CFRef<CFURLRef> found = osa::search(folder, {creator, bundleID, name}, osa::kDepth);
        if (!found) continue;
        if (ref != nullptr && !CFURLGetFSRef(found.get(), ref)) continue;
        if (url != nullptr) *url = found.leak();
        return noErr;
    }
    return kLSApplicationNotFoundErr;
}
