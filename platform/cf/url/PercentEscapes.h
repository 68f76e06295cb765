// Which characters a URL may hold, and percent escapes in bytes.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace osa {

/// Whether a URL may hold the character outside of an escape; "%" and "#" are no such characters.
bool isURLCharacter(char32_t character);

/// Whether the whole text may be a URL: legal characters, "#" and complete escapes.
bool isLegalURLText(std::string_view text);

/// Adds "%XX" of one byte.
void appendEscape(unsigned char byte, std::string& out);

/// Escapes each byte that a path in a URL may not hold; "/" is kept.
std::string escapePath(std::string_view bytes);

/// Keeps what is legal, complete escapes too, and escapes every other byte.
std::string escapeIllegal(std::string_view bytes);

/// The byte of an escape that begins at `position`, or -1 when there is none.
int escapedByteAt(std::string_view text, std::size_t position);

/// The text with every escape replaced by its byte; nothing when one is malformed.
std::optional<std::string> unescape(std::string_view text);

}  // namespace osa
