// Which resources a command is about: TYPE or TYPE:ID, as people write them.
#pragma once

#include <CoreServices/MacTypes.h>

#include <optional>
#include <string>
#include <string_view>

namespace osa::cli {

struct ResourceSelector {
    ResType type = 0;
    std::optional<SInt16> id;

    bool matches(ResType otherType, SInt16 otherID) const {
        return type == otherType && (!id || *id == otherID);
    }
};

/// A type of up to four Mac Roman characters (in UTF-8, padded with blanks) and perhaps ":" and a
/// number. A type may hold a colon itself: what follows the last one counts as an id when it is a
/// number. Nothing when the text is neither.
std::optional<ResourceSelector> parseResourceSelector(std::string_view text);

/// The four Mac Roman characters of a type in UTF-8, controls as dots.
std::string fourCharText(ResType type);
std::string macRomanText(const unsigned char* bytes, std::size_t length);

/// Why a file's resources cannot be read or changed; nothing for 0.
std::string resourceReason(OSStatus status);

}  // namespace osa::cli
