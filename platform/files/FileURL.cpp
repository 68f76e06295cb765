// From URLs to references and back.
#include <CoreFoundation/CFURL.h>
#include <CoreServices/Files.h>

#include <new>
#include <utility>

#include "platform/cf/url/URLObject.h"
#include "platform/files/References.h"

CFURLRef CFURLCreateFromFSRef(CFAllocatorRef, const FSRef* reference) try {
    const auto object = osa::locate(reference);
    if (!object.ok()) return nullptr;
    return osa::createPathURL(object->path(), object->status.isFolder(), nullptr);
} catch (const std::bad_alloc&) {
    return nullptr;
}

Boolean CFURLGetFSRef(CFURLRef url, FSRef* reference) try {
    std::string path;
    if (url == nullptr || reference == nullptr || !osa::filePathOf(url, true, path)) return 0;
    bool isFolder = false;
    const auto made = osa::referenceToPath(std::move(path), &isFolder);
    if (!made.ok() || (CFURLHasDirectoryPath(url) != 0 && !isFolder)) return 0;
    *reference = *made;
    return 1;
} catch (const std::bad_alloc&) {
    return 0;
}
