// Text of any kind in quotes, fit for a terminal.
#pragma once

#include <optional>
#include <string>

#include "platform/events/ItemBlock.h"

namespace osa {

/// The character in UTF-8, or an escape: for the quote, the backslash, controls, and what breaks
/// lines or turns their direction. Half a surrogate pair becomes U+FFFD.
void appendShown(char32_t character, char quote, std::string& out);

/// "text" for a type that is text, malformed parts replaced; "…" behind it stands for what was too
/// much. Nothing for other types or data that the type cannot have.
std::optional<std::string> shownText(DescType type, ByteSpan data);

}  // namespace osa
