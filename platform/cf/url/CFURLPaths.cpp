// CFURL: file-system paths to URLs and back, in POSIX and HFS style.
#include <CoreFoundation/CFRef.h>
#include <CoreFoundation/CFURL.h>

#include <algorithm>
#include <cstring>

#include "platform/cf/BootVolume.h"
#include "platform/cf/url/PercentEscapes.h"
#include "platform/cf/url/URLObject.h"
#include "platform/posix/FileSystem.h"
#include "platform/text/TextConverter.h"

namespace {

/// ":" and "/" change places between the two styles inside of names.
std::u16string swapSeparators(std::u16string_view name) {
    std::u16string swapped(name);
    for (char16_t& unit : swapped) unit = unit == u':' ? u'/' : unit == u'/' ? u':' : unit;
    return swapped;
}

bool isBootVolume(std::u16string_view name) {
    return std::ranges::equal(name, osa::kBootVolumeName, [](char16_t a, char16_t b) {
        return osa::foldCase(a) == osa::foldCase(b);
    });
}

/// "Linux:a:b" and ":a:b" as "/a/b" and "a/b". Each ":" beyond one goes up a folder. A name without
/// any
/// ":" is relative, unless it is the volume's.
std::u16string posixFromHFS(std::u16string_view path) {
    std::u16string out;
    const bool partial = path.starts_with(u':');
    const std::size_t firstColon = path.find(u':');
    if (!partial && firstColon == path.npos && !isBootVolume(path)) return swapSeparators(path);
    if (!partial) {
        const std::u16string_view volume = path.substr(0, firstColon);
        out = isBootVolume(volume) ? u"/" : u"/Volumes/" + swapSeparators(volume) + u"/";
        path.remove_prefix(volume.size());
    }
    if (!path.empty()) path.remove_prefix(1);
    while (!path.empty()) {
        const std::size_t colon = path.find(u':');
        const std::u16string_view name = path.substr(0, colon);
        out += name.empty() ? u".." : swapSeparators(name);
        path.remove_prefix(name.size());
        if (path.empty()) break;
        out += u'/';
        path.remove_prefix(1);
    }
    return out;
}

/// The inverse, without a ":" at the end.
std::u16string hfsFromPOSIX(std::u16string_view path) {
    std::u16string out;
    if (path.starts_with(u'/')) out = osa::kBootVolumeName;
    while (!path.empty()) {
        const std::size_t slash = path.find(u'/');
        const std::u16string_view name = path.substr(0, slash);
        if (!name.empty() && name != u".") {
            out += u':';
            if (name != u"..") out += swapSeparators(name);
        }
        path.remove_prefix(slash == path.npos ? path.size() : slash + 1);
    }
    return out;
}

bool isLocalHost(std::string_view authority) {
    return authority.empty() || std::ranges::equal(authority, std::string_view("localhost"),
                                                   [](char a, char b) { return (a | 0x20) == b; });
}

/// Decodes a path of a URL; false when an escape is no part of a name.
bool decodePath(std::string_view escaped, std::string& path) {
    for (std::size_t i = 0; i < escaped.size(); ++i) {
        const int byte = osa::escapedByteAt(escaped, i);
        if (byte == 0 || byte == '/') return false;
    }
    const auto decoded = osa::unescape(escaped);
    if (!decoded) return false;
    path = *decoded;
    const std::size_t last = path.find_last_not_of('/');
    if (!path.empty()) path.resize(last == path.npos ? 1 : last + 1);
    return true;
}

/// The base to resolve against: with a "/" behind it when it is a folder on disk.
CFRef<CFURLRef> baseAsFolder(CFURLRef base) {
    std::string path;
    if (CFURLHasDirectoryPath(base) || !osa::filePathOf(base, true, path))
        return CFRef<CFURLRef>::Retain(base);
    const auto status = osa::posix::status(path, osa::posix::Follow::yes);
    if (!status.ok() || !status->isFolder()) return CFRef<CFURLRef>::Retain(base);
    return CFRef<CFURLRef>::Adopt(osa::createPathURL(path, true, nullptr));
}

CFRef<CFURLRef> currentFolderURL() {
    return CFRef<CFURLRef>::Adopt(osa::createPathURL(osa::posix::currentFolder(), true, nullptr));
}

bool posixPath(CFStringRef path, CFURLPathStyle style, std::string& out) {
    if (path == nullptr || path->length == 0) return false;
    if (style == kCFURLPOSIXPathStyle && !path->isWide) {
        out = osa::utf8Of(path);
        return out.find('\0') == out.npos;
    }
    const std::u16string units = osa::unitsOf(path);
    const bool known = style == kCFURLPOSIXPathStyle || style == kCFURLHFSPathStyle;
    const std::u16string posix = style == kCFURLHFSPathStyle ? posixFromHFS(units) : units;
    return known && posix.find(u'\0') == posix.npos &&
           osa::encodeText(posix, kCFStringEncodingUTF8, 0, out) == posix.size();
}

}  // namespace

namespace osa {

CFURLRef createPathURL(std::string_view path, bool isDirectory, CFURLRef base) {
    const std::size_t last = path.find_last_not_of('/');
    if (!path.empty()) path = path.substr(0, last == path.npos ? 1 : last + 1);
    if (path.starts_with('/')) return makeObject<__CFURL>(path, isDirectory);
    std::string text = escapePath(path);
    if (isDirectory && !text.ends_with('/')) text += '/';
    // "a:b" would be read as a scheme.
    if (text.find(':') < text.find('/')) text.insert(0, "./");
    return createURL(text, base);
}

bool filePathOf(CFURLRef url, bool resolve, std::string& path) {
    if (!url->path.empty()) {
        path = url->path;
        return true;
    }
    const std::string text = resolve ? absoluteText(url) : std::string(url->text());
    const URLParts parts = parseURL(text);
    if (parts.scheme && !parts.isFileScheme()) return false;
    if (parts.isOpaque() || !isLocalHost(parts.authority.value_or(""))) return false;
    return decodePath(parts.path, path) && !path.empty();
}

}  // namespace osa

CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef allocator, CFStringRef path,
                                       CFURLPathStyle style, Boolean isDirectory) {
    return CFURLCreateWithFileSystemPathRelativeToBase(allocator, path, style, isDirectory,
                                                       nullptr);
}

CFURLRef CFURLCreateWithFileSystemPathRelativeToBase(CFAllocatorRef, CFStringRef path,
                                                     CFURLPathStyle style, Boolean isDirectory,
                                                     CFURLRef base) {
    std::string bytes;
    if (!posixPath(path, style, bytes)) return nullptr;
    if (bytes.starts_with('/')) return osa::createPathURL(bytes, isDirectory, nullptr);
    const auto folder = base == nullptr ? currentFolderURL() : baseAsFolder(base);
    return osa::createPathURL(bytes, isDirectory, folder.get());
}

CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef, const UInt8* path, CFIndex length,
                                                 Boolean isDirectory) {
    if (path == nullptr || length <= 0) return nullptr;
    const std::string_view bytes(reinterpret_cast<const char*>(path),
                                 static_cast<std::size_t>(length));
    if (bytes.find('\0') != bytes.npos) return nullptr;
    if (bytes.starts_with('/')) return osa::createPathURL(bytes, isDirectory, nullptr);
    return osa::createPathURL(bytes, isDirectory, currentFolderURL().get());
}

CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFURLPathStyle style) {
    std::string path;
    std::u16string units;
    if (url == nullptr || !osa::filePathOf(url, false, path)) return nullptr;
    if (style == kCFURLPOSIXPathStyle) return osa::createString(path);
    if (style != kCFURLHFSPathStyle || !osa::utf16FromUTF8(path, units)) return nullptr;
    return osa::createString(hfsFromPOSIX(units));
}

Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean resolveAgainstBase, UInt8* buffer,
                                         CFIndex bufferSize) {
    std::string path;
    if (url == nullptr || buffer == nullptr) return false;
    if (!osa::filePathOf(url, resolveAgainstBase, path)) return false;
    if (static_cast<CFIndex>(path.size()) >= bufferSize) return false;
    std::memcpy(buffer, path.c_str(), path.size() + 1);
    return true;
}
