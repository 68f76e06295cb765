// URLs from bytes, relative to each other, and any bytes as a path. A zero in the input parts base
// and reference.
#include <CoreFoundation/CFRef.h>
#include <CoreFoundation/CFURL.h>
#include <OSA/Diagnostics.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

using URLRef = CFRef<CFURLRef>;
using StringRef = CFRef<CFStringRef>;

URLRef makeURL(const std::uint8_t* data, std::size_t size, CFURLRef base) {
    return URLRef::Adopt(CFURLCreateWithBytes(nullptr, data, static_cast<CFIndex>(size),
                                              kCFStringEncodingUTF8, base));
}

/// What was made from bytes is legal text, and making a URL absolute is done once.
void checkURL(const URLRef& url) {
    if (!url) return;
    if (!URLRef::Adopt(CFURLCreateWithString(nullptr, CFURLGetString(url.get()), nullptr)))
        std::abort();
    const auto absolute = URLRef::Adopt(CFURLCopyAbsoluteURL(url.get()));
    const auto again = URLRef::Adopt(CFURLCopyAbsoluteURL(absolute.get()));
    if (!CFEqual(absolute.get(), again.get())) std::abort();
    for (const CFURLPathStyle style : {kCFURLPOSIXPathStyle, kCFURLHFSPathStyle}) {
        const auto path = StringRef::Adopt(CFURLCopyFileSystemPath(url.get(), style));
        if (path) URLRef::Adopt(CFURLCreateWithFileSystemPath(nullptr, path.get(), style, true));
    }
    StringRef::Adopt(CFURLCopyLastPathComponent(url.get()));
    StringRef::Adopt(CFURLCopyPathExtension(url.get()));
    StringRef::Adopt(CFURLCopyHostName(url.get()));
    StringRef::Adopt(
        CFURLCreateStringByReplacingPercentEscapes(nullptr, CFURLGetString(url.get()), CFSTR("")));
    const auto inside =
        URLRef::Adopt(CFURLCreateCopyAppendingPathComponent(nullptr, url.get(), CFSTR("x"), false));
    const auto parent =
        URLRef::Adopt(CFURLCreateCopyDeletingLastPathComponent(nullptr, inside.get()));
    if (inside && (!parent || !CFURLHasDirectoryPath(parent.get()))) std::abort();
    URLRef::Adopt(CFURLCreateCopyDeletingPathExtension(nullptr, url.get()));
}

/// An absolute path comes back byte for byte, but for slashes at its end.
void checkPath(std::string path) {
    path.insert(0, "/");
    const auto url = URLRef::Adopt(CFURLCreateFromFileSystemRepresentation(
        nullptr, reinterpret_cast<const UInt8*>(path.data()), static_cast<CFIndex>(path.size()),
        true));
    std::string back(path.size() + 1, '\0');
    auto* const buffer = reinterpret_cast<UInt8*>(back.data());
    const auto room = static_cast<CFIndex>(back.size());
    if (!url || !CFURLGetFileSystemRepresentation(url.get(), true, buffer, room)) std::abort();
    const std::size_t last = path.find_last_not_of('/');
    path.resize(last == path.npos ? 1 : last + 1);
    if (path != back.c_str()) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const CFIndex before = OSALiveObjectCount();
    const void* const zero = size == 0 ? nullptr : std::memchr(data, 0, size);
    const std::size_t first =
        zero == nullptr ? size
                        : static_cast<std::size_t>(static_cast<const std::uint8_t*>(zero) - data);
    {
        const URLRef base = makeURL(data, first, nullptr);
        checkURL(base);
        if (zero != nullptr) checkURL(makeURL(data + first + 1, size - first - 1, base.get()));
        checkPath(std::string(reinterpret_cast<const char*>(data), first));
    }
    if (OSALiveObjectCount() != before) std::abort();
    return 0;
}
