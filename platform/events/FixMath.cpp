// Fixed-point numbers to floating point and back.
#include <CoreServices/FixMath.h>

#include <cmath>
#include <limits>

double Fix2X(Fixed value) {
    return value / 65536.0;
}

Fixed X2Fix(double value) {
    if (std::isnan(value)) return 0;
    const double scaled = std::round(value * 65536.0);
    if (scaled >= std::numeric_limits<Fixed>::max()) return std::numeric_limits<Fixed>::max();
    if (scaled <= std::numeric_limits<Fixed>::min()) return std::numeric_limits<Fixed>::min();
    return static_cast<Fixed>(scaled);
}
