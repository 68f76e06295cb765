// ICU's converters: opened once a thread and encoding, strict both ways.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <string>
#include <string_view>

#include "platform/base/ByteReader.h"

namespace osa {

/// As decodeText and encodeText, for encodings in ICU's table only.
bool decodeWithIcu(ByteSpan bytes, UInt32 cfEncoding, std::u16string& out);
std::size_t encodeWithIcu(std::u16string_view units, UInt32 cfEncoding, UInt8 lossByte,
                          std::string& out);

}  // namespace osa
