// The insides of CFNumber, for the property lists.
#pragma once

#include <CoreFoundation/CFNumber.h>

#include "platform/cf/CFRuntime.h"

struct __CFNumber : osa::CFObject {
    static const osa::ClassRecord kClass;
    __CFNumber(CFNumberType valueType, SInt64 value)
        : CFObject(kClass), type_(valueType), integer(value) {}
    constexpr __CFNumber(CFNumberType valueType, double value, std::uint32_t initialCount = 1)
        : CFObject(kClass, initialCount), type_(valueType), real(value) {}

    bool isReal() const { return type_ == kCFNumberFloat32Type || type_ == kCFNumberFloat64Type; }
    double asReal() const;

    CFNumberType type_;  ///< a fixed-width type
    union {
        SInt64 integer;
        double real;
    };
    /// The integer is the bit pattern of an unsigned one beyond the signed range.
    bool isHugeUnsigned = false;
};

namespace osa {

CFNumberRef createInteger(SInt64 value);
CFNumberRef createUnsigned(UInt64 value);
CFNumberRef createReal(double value);
/// Decimal text: integers as such, reals with as many digits as give the same value back.
std::string numberText(const __CFNumber& number);

}  // namespace osa
