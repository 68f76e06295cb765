// The characters of rich text, without its looks.
//
// Ends of paragraphs and of table cells become U+000A, forced line ends U+2028, attachments U+FFFC.
// List markers and hidden text are part of the text. Damaged documents give what can be read of
// them.
#pragma once

#include <string>

#include "platform/base/ByteReader.h"

namespace osa {

/// Whether `bytes` begin as rich text does; other files with such a name are read as plain text.
bool isRichText(ByteSpan bytes);

/// The text of a rich text document. Groups nested deeper than 4096 share the state of that level.
std::u16string plainTextOfRichText(ByteSpan rtf);

}  // namespace osa
