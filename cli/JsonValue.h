// Core Foundation values as JSON.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <nlohmann/json.hpp>

namespace osa::cli {

/// Keeps the order in which members are set.
using Json = nlohmann::ordered_json;

/// Strings, numbers, Booleans, arrays and dictionaries (members sorted by key) as themselves; data
/// as base64 strings, dates as ISO 8601 in UTC; NaN and infinities as null; anything else as its
/// description.
Json jsonValue(CFTypeRef value);

}  // namespace osa::cli
