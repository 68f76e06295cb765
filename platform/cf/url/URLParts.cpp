// Parsing and resolving URLs.
#include "platform/cf/url/URLParts.h"

#include <algorithm>

namespace osa {

namespace {

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isSchemeCharacter(char c) {
    return isLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
}

std::optional<std::string_view> takeScheme(std::string_view& text) {
    const std::size_t colon = text.find(':');
    if (colon == text.npos || colon == 0 || !isLetter(text[0])) return std::nullopt;
    const std::string_view scheme = text.substr(0, colon);
    if (!std::ranges::all_of(scheme, isSchemeCharacter)) return std::nullopt;
    text.remove_prefix(colon + 1);
    return scheme;
}

std::string_view takeUntil(std::string_view& text, std::string_view stops) {
    const std::string_view taken = text.substr(0, text.find_first_of(stops));
    text.remove_prefix(taken.size());
    return taken;
}

/// The base's path up to its last "/", with the reference behind it.
std::string mergePaths(const URLParts& base, std::string_view path) {
    if (base.path.empty() && base.authority) return "/" + std::string(path);
    return std::string(base.path.substr(0, base.path.rfind('/') + 1)) + std::string(path);
}

}  // namespace

bool URLParts::isFileScheme() const {
    return scheme && std::ranges::equal(*scheme, std::string_view("file"),
                                        [](char a, char b) { return (a | 0x20) == b; });
}

bool URLParts::isOpaque() const {
    return scheme && !authority && !path.starts_with('/');
}

std::string URLParts::text() const {
    std::string out;
    if (scheme) out.append(*scheme).append(":");
    if (authority) out.append("//").append(*authority);
    return out.append(path).append(rest);
}

URLParts parseURL(std::string_view text) {
    URLParts parts;
    parts.scheme = takeScheme(text);
    if (text.starts_with("//")) {
        text.remove_prefix(2);
        parts.authority = takeUntil(text, "/?#");
    }
    parts.path = takeUntil(text, "?#");
    parts.rest = text;
    return parts;
}

std::string removeDotSegments(std::string_view path) {
    std::string out;
    const bool absolute = path.starts_with('/');
    while (!path.empty()) {
        const std::size_t slash = path.find('/');
        const std::string_view segment = path.substr(0, slash);
        const std::string_view slashes = slash == path.npos ? "" : "/";
        path.remove_prefix(segment.size() + slashes.size());
        if (segment == ".") continue;
        if (segment != "..") {
            out.append(segment).append(slashes);
            continue;
        }
        // Drops "name/"; a relative path keeps what leads out of it.
        const std::string_view kept(out.data(), out.empty() ? 0 : out.size() - 1);
        const std::size_t start = kept.rfind('/') == kept.npos ? 0 : kept.rfind('/') + 1;
        const bool nothingToDrop = out.empty() || kept.substr(start) == "..";
        if (nothingToDrop && !absolute) {
            out.append(segment).append(slashes);
        } else if (!(absolute && out == "/")) {
            out.resize(start);
        }
    }
    return out;
}

std::string resolveURL(std::string_view baseText, std::string_view referenceText) {
    const URLParts base = parseURL(baseText);
    const URLParts reference = parseURL(referenceText);
    URLParts result = reference;
    std::string path(reference.path);
    std::string rest(reference.rest);
    if (!reference.scheme) {
        if (base.isOpaque()) return std::string(referenceText);
        result.scheme = base.scheme;
        if (!reference.authority) {
            result.authority = base.authority;
            if (reference.path.empty()) {
                path = base.path;
                const std::string_view query = base.rest.substr(0, base.rest.find('#'));
                if (!rest.starts_with('?')) rest.insert(0, query);
            } else if (!reference.path.starts_with('/')) {
                path = mergePaths(base, reference.path);
            }
        }
    }
    if (!result.isOpaque() || !reference.scheme) path = removeDotSegments(path);
    result.path = path;
    result.rest = rest;
    return result.text();
}

SplitPath splitPath(std::string_view path) {
    SplitPath split;
    split.endsInSlash = path.ends_with('/');
    if (path.find_first_not_of('/') == path.npos) {
        split.component = path.substr(0, 1);
        return split;
    }
    path = path.substr(0, path.find_last_not_of('/') + 1);
    const std::size_t start = path.rfind('/') + 1;  // 0 when there is no "/"
    split.folder = path.substr(0, start);
    split.component = path.substr(start);
    return split;
}

}  // namespace osa
