// CFNumber and CFBoolean.
#include <CoreFoundation/CFNumber.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

#include "platform/cf/NumberObject.h"

struct __CFBoolean : osa::CFObject {
    static const osa::ClassRecord kClass;
    constexpr explicit __CFBoolean(bool truth) : CFObject(kClass, kImmortal), value(truth) {}
    bool value;
};

namespace {

std::string describeBoolean(const osa::CFObject* object) {
    return static_cast<const __CFBoolean*>(object)->value ? "true" : "false";
}

constexpr CFNumberType fixedWidth(CFNumberType type) {
    switch (type) {
        case kCFNumberCharType:
            return kCFNumberSInt8Type;
        case kCFNumberShortType:
            return kCFNumberSInt16Type;
        case kCFNumberIntType:
            return kCFNumberSInt32Type;
        case kCFNumberLongType:
        case kCFNumberLongLongType:
        case kCFNumberCFIndexType:
        case kCFNumberNSIntegerType:
            return kCFNumberSInt64Type;
        case kCFNumberFloatType:
            return kCFNumberFloat32Type;
        case kCFNumberDoubleType:
        case kCFNumberCGFloatType:
            return kCFNumberFloat64Type;
        default:
            return type;
    }
}

int compareReals(double a, double b) {
    if (std::isnan(a) || std::isnan(b)) return std::isnan(a) - std::isnan(b);
    return a < b ? -1 : a > b ? 1 : 0;
}

/// Exact: 2^63 and its neighbours differ although they are one double.
int compareIntegerToReal(const __CFNumber& integer, double real) {
    const int rough = compareReals(integer.asReal(), real);
    if (rough != 0 || integer.isHugeUnsigned || real >= 0x1p63) {
        if (rough == 0 && integer.isHugeUnsigned && real < 0x1p64) {
            const auto whole = static_cast<UInt64>(real);
            const auto value = static_cast<UInt64>(integer.integer);
            return value < whole ? -1 : value > whole ? 1 : 0;
        }
        return rough == 0 && real >= 0x1p63 ? -1 : rough;
    }
    const auto whole = static_cast<SInt64>(real);
    return integer.integer < whole ? -1 : integer.integer > whole ? 1 : 0;
}

int compareNumbers(const __CFNumber& a, const __CFNumber& b) {
    if (a.isReal() && b.isReal()) return compareReals(a.real, b.real);
    if (b.isReal()) return compareIntegerToReal(a, b.real);
    if (a.isReal()) return -compareIntegerToReal(b, a.real);
    if (a.isHugeUnsigned != b.isHugeUnsigned) return a.isHugeUnsigned ? 1 : -1;
    return a.integer < b.integer ? -1 : a.integer > b.integer ? 1 : 0;
}

bool equalNumbers(const osa::CFObject* a, const osa::CFObject* b) {
    return compareNumbers(*static_cast<const __CFNumber*>(a), *static_cast<const __CFNumber*>(b)) ==
           0;
}

CFHashCode hashNumber(const osa::CFObject* object) {
    // Equal numbers of different types must have one hash: all are hashed as doubles, both zeros
    // alike.
    const double value = static_cast<const __CFNumber*>(object)->asReal() + 0.0;
    return std::isnan(value) ? 1 : std::hash<double>{}(value);
}

std::string describeNumber(const osa::CFObject* object) {
    return osa::numberText(*static_cast<const __CFNumber*>(object));
}

template <typename T>
__CFNumber* makeInteger(CFNumberType type, const void* bytes) {
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return osa::makeObject<__CFNumber>(type, SInt64{value});
}

template <typename T>
__CFNumber* makeReal(CFNumberType type, const void* bytes) {
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return osa::makeObject<__CFNumber>(type, double{value});
}

/// Stores the nearest T; whether it is the number itself.
template <typename T>
bool storeInteger(const __CFNumber& number, void* target) {
    constexpr T kMin = std::numeric_limits<T>::min();
    constexpr T kMax = std::numeric_limits<T>::max();
    T value = 0;
    bool exact = true;
    if (number.isReal()) {
        const double real = number.real;
        // 2^63 as a double is one more than the largest 64-bit integer.
        if (std::isnan(real)) {
            value = 0;
        } else if (real < static_cast<double>(kMin)) {
            value = kMin;
        } else if (real >= -2.0 * static_cast<double>(kMin / 2)) {
            value = kMax;
        } else {
            value = static_cast<T>(real);
        }
        exact = static_cast<double>(value) == real && !(value == kMax && sizeof(T) == 8);
    } else if (number.isHugeUnsigned || number.integer > SInt64{kMax}) {
        value = kMax;
        exact = false;
    } else if (number.integer < SInt64{kMin}) {
        value = kMin;
        exact = false;
    } else {
        value = static_cast<T>(number.integer);
    }
    std::memcpy(target, &value, sizeof value);
    return exact;
}

template <typename T>
bool storeReal(const __CFNumber& number, void* target) {
    double real = number.asReal();
    constexpr double kLimit = std::numeric_limits<T>::max();
    if (std::isfinite(real) && std::fabs(real) > kLimit) real = std::copysign(kLimit, real);
    const T value = static_cast<T>(real);
    std::memcpy(target, &value, sizeof value);
    if (number.isReal())
        return std::isnan(number.real) || static_cast<double>(value) == number.real;
    return compareIntegerToReal(number, static_cast<double>(value)) == 0;
}

constinit const __CFBoolean theTrue{true};
constinit const __CFBoolean theFalse{false};
constexpr std::uint32_t kImmortal = osa::CFObject::kImmortal;
constinit const __CFNumber infinity{kCFNumberFloat64Type, std::numeric_limits<double>::infinity(),
                                    kImmortal};
constinit const __CFNumber negativeInfinity{kCFNumberFloat64Type,
                                            -std::numeric_limits<double>::infinity(), kImmortal};
constinit const __CFNumber notANumber{kCFNumberFloat64Type,
                                      std::numeric_limits<double>::quiet_NaN(), kImmortal};

}  // namespace

constinit const osa::ClassRecord __CFBoolean::kClass{"CFBoolean", nullptr, nullptr, nullptr,
                                                     describeBoolean};
constinit const osa::ClassRecord __CFNumber::kClass{"CFNumber", osa::deleteObject<__CFNumber>,
                                                    equalNumbers, hashNumber, describeNumber};

constinit const CFBooleanRef kCFBooleanTrue = &theTrue;
constinit const CFBooleanRef kCFBooleanFalse = &theFalse;
constinit const CFNumberRef kCFNumberPositiveInfinity = &infinity;
constinit const CFNumberRef kCFNumberNegativeInfinity = &negativeInfinity;
constinit const CFNumberRef kCFNumberNaN = &notANumber;

double __CFNumber::asReal() const {
    if (isReal()) return real;
    return isHugeUnsigned ? static_cast<double>(static_cast<UInt64>(integer))
                          : static_cast<double>(integer);
}

namespace osa {

CFNumberRef createInteger(SInt64 value) {
    return makeObject<__CFNumber>(kCFNumberSInt64Type, value);
}

CFNumberRef createUnsigned(UInt64 value) {
    auto* const number = makeObject<__CFNumber>(kCFNumberSInt64Type, static_cast<SInt64>(value));
    if (number != nullptr) number->isHugeUnsigned = value > INT64_MAX;
    return number;
}

CFNumberRef createReal(double value) {
    return makeObject<__CFNumber>(kCFNumberFloat64Type, value);
}

std::string numberText(const __CFNumber& number) {
    if (number.isHugeUnsigned) return std::to_string(static_cast<UInt64>(number.integer));
    if (!number.isReal()) return std::to_string(number.integer);
    if (std::isnan(number.real)) return "nan";
    if (std::isinf(number.real)) return number.real < 0 ? "-infinity" : "+infinity";
    char text[64];
    const auto end = number.type_ == kCFNumberFloat32Type
                         ? std::to_chars(text, std::end(text), static_cast<float>(number.real))
                         : std::to_chars(text, std::end(text), number.real);
    return std::string(text, end.ptr);
}

}  // namespace osa

CFTypeID CFBooleanGetTypeID() {
    return osa::typeIDOf(__CFBoolean::kClass);
}

Boolean CFBooleanGetValue(CFBooleanRef boolean) {
    return boolean != nullptr && boolean->value;
}

CFTypeID CFNumberGetTypeID() {
    return osa::typeIDOf(__CFNumber::kClass);
}

CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType type, const void* value) {
    if (value == nullptr) return nullptr;
    const CFNumberType fixed = fixedWidth(type);
    switch (fixed) {
        case kCFNumberSInt8Type:
            return makeInteger<SInt8>(fixed, value);
        case kCFNumberSInt16Type:
            return makeInteger<SInt16>(fixed, value);
        case kCFNumberSInt32Type:
            return makeInteger<SInt32>(fixed, value);
        case kCFNumberSInt64Type:
            return makeInteger<SInt64>(fixed, value);
        case kCFNumberFloat32Type:
            return makeReal<float>(fixed, value);
        case kCFNumberFloat64Type:
            return makeReal<double>(fixed, value);
        default:
            return nullptr;
    }
}

CFNumberType CFNumberGetType(CFNumberRef number) {
    return number == nullptr ? 0 : number->type_;
}

CFIndex CFNumberGetByteSize(CFNumberRef number) {
    static constexpr CFIndex kSizes[] = {0, 1, 2, 4, 8, 4, 8};
    return kSizes[CFNumberGetType(number)];
}

Boolean CFNumberIsFloatType(CFNumberRef number) {
    return number != nullptr && number->isReal();
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value) {
    if (number == nullptr || value == nullptr) return false;
    switch (fixedWidth(type)) {
        case kCFNumberSInt8Type:
            return storeInteger<SInt8>(*number, value);
        case kCFNumberSInt16Type:
            return storeInteger<SInt16>(*number, value);
        case kCFNumberSInt32Type:
            return storeInteger<SInt32>(*number, value);
        case kCFNumberSInt64Type:
            return storeInteger<SInt64>(*number, value);
        case kCFNumberFloat32Type:
            return storeReal<float>(*number, value);
        case kCFNumberFloat64Type:
            return storeReal<double>(*number, value);
        default:
            return false;
    }
}

CFComparisonResult CFNumberCompare(CFNumberRef first, CFNumberRef second, void*) {
    if (first == nullptr || second == nullptr) return kCFCompareEqualTo;
    return static_cast<CFComparisonResult>(compareNumbers(*first, *second));
}
