// CFURL: path components and extensions.
#include <CoreFoundation/CFURL.h>

#include "platform/cf/url/PercentEscapes.h"
#include "platform/cf/url/URLObject.h"
#include "platform/text/TextConverter.h"

namespace {

/// A copy with another path; what follows the path is kept or dropped.
enum class Rest { keep, drop };
CFURLRef copyWithPath(CFURLRef url, std::string_view path, Rest rest) {
    osa::URLParts parts = url->parts();
    parts.path = path;
    if (rest == Rest::drop) parts.rest = {};
    return osa::createURL(parts.text(), url->base);
}

/// The component's extension with its ".", or nothing. A "." that begins or ends a name makes none.
std::string_view extensionOf(std::string_view component) {
    const std::size_t dot = component.rfind('.');
    if (dot == component.npos || dot == 0 || dot + 1 == component.size()) return {};
    return component.substr(dot);
}

bool escapedUTF8(CFStringRef string, std::string& out) {
    if (string == nullptr) return false;
    const std::u16string units = osa::unitsOf(string);
    std::string bytes;
    if (osa::encodeText(units, kCFStringEncodingUTF8, 0, bytes) != units.size()) return false;
    out = osa::escapePath(bytes);
    return true;
}

/// Whether a path says by itself that it leads to a folder.
bool endsInFolder(std::string_view path) {
    const osa::SplitPath split = osa::splitPath(path);
    return split.endsInSlash || split.component == "." || split.component == "..";
}

bool hasComponents(CFURLRef url) {
    return url != nullptr && !url->parts().isOpaque();
}

CFStringRef copyDecoded(std::string_view escaped) {
    const auto bytes = osa::unescape(escaped);
    return bytes ? osa::createString(*bytes) : nullptr;
}

}  // namespace

Boolean CFURLHasDirectoryPath(CFURLRef url) {
    if (url == nullptr) return false;
    if (!url->path.empty()) return url->isDirectory || endsInFolder(url->path);
    const osa::URLParts parts = url->parts();
    if (parts.isOpaque()) return false;
    if (parts.path.empty()) return url->base != nullptr && CFURLHasDirectoryPath(url->base);
    return endsInFolder(parts.path);
}

CFStringRef CFURLCopyLastPathComponent(CFURLRef url) {
    if (!hasComponents(url)) return nullptr;
    const osa::URLParts parts = url->parts();
    if (parts.path.empty() && url->base != nullptr) return CFURLCopyLastPathComponent(url->base);
    return copyDecoded(osa::splitPath(parts.path).component);
}

CFStringRef CFURLCopyPathExtension(CFURLRef url) {
    if (!hasComponents(url)) return nullptr;
    const osa::URLParts parts = url->parts();
    const std::string_view extension = extensionOf(osa::splitPath(parts.path).component);
    return extension.empty() ? nullptr : copyDecoded(extension.substr(1));
}

CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef, CFURLRef url, CFStringRef component,
                                               Boolean isDirectory) {
    std::string name;
    if (!hasComponents(url) || !escapedUTF8(component, name)) return nullptr;
    const osa::URLParts parts = url->parts();
    std::string path(parts.path);
    if (path.empty() && parts.authority) path = "/";
    if (path.empty() && name.find(':') < name.find('/')) path = "./";
    if (!path.empty() && !path.ends_with('/')) path += '/';
    path += name;
    if (isDirectory && !path.ends_with('/')) path += '/';
    return copyWithPath(url, path, Rest::keep);
}

CFURLRef CFURLCreateCopyDeletingLastPathComponent(CFAllocatorRef, CFURLRef url) {
    if (!hasComponents(url)) return nullptr;
    const osa::URLParts parts = url->parts();
    const osa::SplitPath split = osa::splitPath(parts.path);
    if (split.component.empty() || split.component == "/") return nullptr;
    const bool goesUp = split.component == "." || split.component == "..";
    std::string path(split.folder);
    if (goesUp) path.append(split.component).append("/../");
    return copyWithPath(url, path.empty() ? "./" : path, Rest::drop);
}

CFURLRef CFURLCreateCopyAppendingPathExtension(CFAllocatorRef, CFURLRef url,
                                               CFStringRef extension) {
    std::string escaped;
    if (!hasComponents(url) || !escapedUTF8(extension, escaped)) return nullptr;
    const osa::URLParts parts = url->parts();
    const osa::SplitPath split = osa::splitPath(parts.path);
    if (split.component.empty() || split.component == "/") return nullptr;
    std::string path = std::string(split.folder).append(split.component) + "." + escaped;
    if (split.endsInSlash) path += '/';
    return copyWithPath(url, path, Rest::keep);
}

CFURLRef CFURLCreateCopyDeletingPathExtension(CFAllocatorRef, CFURLRef url) {
    if (!hasComponents(url)) return nullptr;
    const osa::URLParts parts = url->parts();
    const osa::SplitPath split = osa::splitPath(parts.path);
    const std::string_view extension = extensionOf(split.component);
    if (extension.empty()) return static_cast<CFURLRef>(CFRetain(url));
    std::string path(split.folder);
    path += split.component.substr(0, split.component.size() - extension.size());
    if (split.endsInSlash) path += '/';
    return copyWithPath(url, path, Rest::keep);
}
