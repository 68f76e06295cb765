// The insides of CFURL, for the files that implement it.
#pragma once

#include <CoreFoundation/CFURL.h>

#include <string>
#include <string_view>

#include "platform/cf/CFRuntime.h"
#include "platform/cf/StringObject.h"
#include "platform/cf/url/URLParts.h"

struct __CFURL : osa::CFObject {
    static const osa::ClassRecord kClass;
    /// Takes over one reference to each.
    __CFURL(CFStringRef ownText, CFURLRef ownBase)
        : CFObject(kClass), string(ownText), base(ownBase) {}
    ~__CFURL();

    /// ASCII, hence kept in 8 bits.
    std::string_view text() const { return string->macRoman(); }
    osa::URLParts parts() const { return osa::parseURL(text()); }

    CFStringRef string;
    CFURLRef base;  ///< or null
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
