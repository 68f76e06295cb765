// The insides of CFURL, for the files that implement it.
#pragma once

#include <CoreFoundation/CFURL.h>

#include <atomic>
#include <string>
#include <string_view>

#include "platform/cf/CFRuntime.h"
#include "platform/cf/StringObject.h"
#include "platform/cf/url/URLParts.h"

/// A URL is its text or, when it was made of an absolute path on disk, that path: most such URLs
/// only carry the path from one call to the next, and their text is made when it is first asked
/// for. Nothing else of a URL ever changes.
struct __CFURL : osa::CFObject {
    static const osa::ClassRecord kClass;
    /// Takes over one reference to each.
    __CFURL(CFStringRef ownText, CFURLRef ownBase)
        : CFObject(kClass), base(ownBase), string_(ownText) {}
    /// `absolutePath` ends in "/" only when it is the root.
    __CFURL(std::string_view absolutePath, bool directory)
        : CFObject(kClass), path(absolutePath), isDirectory(directory) {}
    ~__CFURL();

    /// Borrowed; null when memory fails.
    CFStringRef string() const {
        const CFStringRef made = string_.load(std::memory_order_acquire);
        return made != nullptr ? made : makeString();
    }
    /// ASCII, hence kept in 8 bits.
    std::string_view text() const {
        const CFStringRef made = string();
        return made == nullptr ? std::string_view() : made->macRoman();
    }
    osa::URLParts parts() const { return osa::parseURL(text()); }

    const CFURLRef base = nullptr;   ///< or null
    const std::string path;          ///< bytes as on disk; empty: the URL was made of text
    const bool isDirectory = false;  ///< of a URL made of a path

  private:
    CFStringRef makeString() const;

    mutable std::atomic<CFStringRef> string_{nullptr};
};

namespace osa {

/// A URL of ASCII text, which is kept as it is; `base` (or null) is retained, unless the text is
/// absolute. Null when memory fails.
CFURLRef createURL(std::string_view text, CFURLRef base);
/// The text resolved against the base and its bases.
std::string absoluteText(CFURLRef url);
/// The bytes of the URL's POSIX path without trailing "/"; false as for
/// CFURLGetFileSystemRepresentation.
bool filePathOf(CFURLRef url, bool resolve, std::string& path);
/// A URL of a POSIX path's bytes, relative to `base` (or null) when the path is.
CFURLRef createPathURL(std::string_view path, bool isDirectory, CFURLRef base);

}  // namespace osa
