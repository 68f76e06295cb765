// Absolute times as ISO 8601 text in UTC, the form that property lists and reports use.
#pragma once

#include <CoreFoundation/CFDate.h>

#include <optional>
#include <string>
#include <string_view>

namespace osa {

/// "2001-01-01T00:00:00Z": whole seconds, rounded down.
std::string iso8601(CFAbsoluteTime time);
/// The same form read; the fields must be in their ranges, the year may be negative or longer.
std::optional<CFAbsoluteTime> timeOfISO8601(std::string_view text);

}  // namespace osa
