// A URL's text taken apart, and the resolution of relative references.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace osa {

/// Views into the text that was parsed, escapes untouched.
struct URLParts {
    std::optional<std::string_view> scheme;     ///< without ":"
    std::optional<std::string_view> authority;  ///< without "//"
    std::string_view path;
    std::string_view rest;  ///< from "?" or "#" on

    bool isFileScheme() const;
    /// A scheme followed by something that is no path, as in "mailto:a@b".
    bool isOpaque() const;
    std::string text() const;
};

URLParts parseURL(std::string_view text);

/// The reference made absolute; a reference to an opaque base stays as it is.
std::string resolveURL(std::string_view base, std::string_view reference);

/// The path without "." and ".." segments; ".." at the root goes nowhere.
std::string removeDotSegments(std::string_view path);

/// The path's last component, without trailing "/" and with whatever stands before it; "/" alone
/// for the root.
struct SplitPath {
    std::string_view folder;  ///< up to and with the "/" before the component
    std::string_view component;
    bool endsInSlash = false;
};
SplitPath splitPath(std::string_view path);

}  // namespace osa
