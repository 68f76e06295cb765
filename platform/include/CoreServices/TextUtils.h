// Numbers as classic text.
#pragma once

#include <CoreServices/MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Decimal digits, with "-" before them for a negative number, as a Pascal string.
OSA_PLATFORM_EXPORT void NumToString(SInt32 number, Str255 text);

#ifdef __cplusplus
}
#endif
