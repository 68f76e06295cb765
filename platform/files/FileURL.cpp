// From URLs to references and back.
#include <CoreFoundation/CFURL.h>
#include <CoreServices/Files.h>
#include <limits.h>

#include "platform/files/References.h"

CFURLRef CFURLCreateFromFSRef(CFAllocatorRef allocator, const FSRef* reference) {
    const auto object = osa::locate(reference);
    if (!object.ok()) return nullptr;
    const std::string path = object->path();
    return CFURLCreateFromFileSystemRepresentation(
        allocator, reinterpret_cast<const UInt8*>(path.data()), static_cast<CFIndex>(path.size()),
        object->status.isFolder() ? 1 : 0);
}

Boolean CFURLGetFSRef(CFURLRef url, FSRef* reference) {
    UInt8 path[PATH_MAX];
    if (url == nullptr || reference == nullptr) return 0;
    if (CFURLGetFileSystemRepresentation(url, 1, path, sizeof path) == 0) return 0;
    bool isFolder = false;
    const auto made = osa::referenceToPath(reinterpret_cast<const char*>(path), &isFolder);
    if (!made.ok() || (CFURLHasDirectoryPath(url) != 0 && !isFolder)) return 0;
    *reference = *made;
    return 1;
}
