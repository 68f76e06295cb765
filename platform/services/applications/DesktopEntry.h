// Desktop entries: the ".desktop" files in which a desktop's programs announce themselves.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/ByteReader.h"

namespace osa {

/// The languages that a text is looked for in, best first, of a locale's name
/// ("de_AT.UTF-8@euro": "de_AT@euro", "de_AT", "de@euro", "de"). None for "C" and "POSIX".
std::vector<std::string> languagesOfLocale(std::string_view locale);
/// Those of $LC_ALL, $LC_MESSAGES or $LANG, whichever is set first.
std::vector<std::string> desktopLanguages();

/// The group "Desktop Entry" of a file of at most 1 MiB. Of several such groups, and of several
/// lines of one key, the first counts. Lines that are no "key=value" or hold anything but UTF-8 say
/// nothing; the others of their file do.
class DesktopEntry {
  public:
    /// None when there is no such group.
    static std::optional<DesktopEntry> parse(ByteSpan bytes);
    /// The same of a file; none as well when it is too long or cannot be read.
    static std::optional<DesktopEntry> read(const std::string& path);

    /// The value with its escapes undone; empty when it is missing. An unknown escape stays as it
    /// is.
    std::string text(std::string_view key) const { return localText(key, {}); }
    /// In the first of `languages` that the entry speaks, else as text().
    std::string localText(std::string_view key, const std::vector<std::string>& languages) const;
    bool isTrue(std::string_view key) const;

  private:
    explicit DesktopEntry(std::string_view group) : group_(group) {}

    std::string group_;  // its lines
};

}  // namespace osa
