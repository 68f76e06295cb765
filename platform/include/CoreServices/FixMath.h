// Fixed-point numbers: 16 bits before the point, 16 behind it.
#pragma once

#include <CoreServices/MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

OSA_PLATFORM_EXPORT double Fix2X(Fixed value);
/// Rounded to the nearest, away from zero in the middle; 0x7FFFFFFF or 0x80000000 when it does not
/// fit, 0 for what is no number.
OSA_PLATFORM_EXPORT Fixed X2Fix(double value);

#ifdef __cplusplus
}
#endif
