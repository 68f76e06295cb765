// The table of encodings that ICU converts for us, and the numbers other systems give them.
#pragma once

#include <CoreFoundation/CFBase.h>

namespace osa {

/// ICU's name of the converter for a Core Foundation encoding, or null. The Unicode forms and the
/// sets with tables of our own are not in it.
const char* icuNameOfEncoding(UInt32 cfEncoding);

}  // namespace osa
