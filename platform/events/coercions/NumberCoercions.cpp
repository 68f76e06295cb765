// Numbers to numbers by value, and numbers to decimal text and back.
#include <array>
#include <charconv>
#include <cmath>
#include <concepts>
#include <limits>
#include <system_error>

#include "platform/events/coercions/BuiltInCoercions.h"
#include "platform/events/coercions/CoercionData.h"
#include "platform/events/coercions/DecimalText.h"

namespace osa {
namespace {

/// What numbers go through on their way to another type: it holds every 64-bit integer, signed or
/// not, and every double exactly.
using Number = long double;
static_assert(std::numeric_limits<Number>::digits >= 64);

/// 16 bits before the point, 16 behind it.
struct FixedPoint {
    Fixed bits;
};
constexpr int kFixedScale = 65536;

// One set of overloads a kind of number. False: the value has no place in the type.

template <typename T>
requires std::is_arithmetic_v<T> Number toNumber(T value) {
    return value;
}

Number toNumber(FixedPoint value) {
    return static_cast<Number>(value.bits) / kFixedScale;
}

template <std::integral T>
bool fromNumber(Number number, T& value) {
    const Number rounded = std::round(number);
    // The comparisons are false for what is no number.
    const bool fits = rounded >= static_cast<Number>(std::numeric_limits<T>::min()) &&
                      rounded <= static_cast<Number>(std::numeric_limits<T>::max());
    if (fits) value = static_cast<T>(rounded);
    return fits;
}

template <std::floating_point T>
bool fromNumber(Number number, T& value) {
    // What lies beyond the type's range becomes infinite, as IEEE 754 has it.
    value = static_cast<T>(number);
    return std::isfinite(value);
}

bool fromNumber(Number number, FixedPoint& value) {
    return fromNumber(number * kFixedScale, value.bits);
}

template <std::integral T>
bool fromDecimal(const DecimalText& decimal, T& value) {
    std::uint64_t magnitude = 0;
    if (!decimal.roundedMagnitude(magnitude)) return false;
    const auto number = static_cast<Number>(magnitude);
    return fromNumber(decimal.isNegative() ? -number : number, value);
}

template <std::floating_point T>
bool fromDecimal(const DecimalText& decimal, T& value) {
    const std::string_view literal = decimal.literal();
    const auto [end, error] =
        std::from_chars(literal.data(), literal.data() + literal.size(), value);
    if (error == std::errc::result_out_of_range) {
        if (!decimal.isBelowOne()) return false;
        value = 0;
    } else if (error != std::errc{} || !std::isfinite(value)) {
        return false;
    }
    if (decimal.isNegative()) value = -value;
    return true;
}

bool fromDecimal(const DecimalText& decimal, FixedPoint& value) {
    double number = 0;
    return fromDecimal(decimal, number) && fromNumber(number, value);
}

/// The shortest text that reads back as the same value.
template <typename T>
requires std::is_arithmetic_v<T>
bool toDecimal(T value, std::string& text) {
    if (!std::isfinite(toNumber(value))) return false;
    std::array<char, 64> buffer;
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    text.assign(buffer.data(), end);
    return error == std::errc{};
}

bool toDecimal(FixedPoint value, std::string& text) {
    return toDecimal(static_cast<double>(toNumber(value)), text);
}

struct NumberForm {
    DescType type;
    bool (*read)(const AEDesc* from, Number& number);
    OSErr (*write)(Number number, DescType toType, AEDesc* result);
    bool (*print)(const AEDesc* from, std::string& text);
    OSErr (*parse)(const DecimalText& decimal, DescType toType, AEDesc* result);
};

template <typename T>
struct Functions {
    static bool read(const AEDesc* from, Number& number) {
        T value;
        if (!readValue(from, value)) return false;
        number = toNumber(value);
        return true;
    }
    static OSErr write(Number number, DescType toType, AEDesc* result) {
        T value;
        return fromNumber(number, value) ? makeDescOf(toType, value, result)
                                         : OSErr{errAECoercionFail};
    }
    static bool print(const AEDesc* from, std::string& text) {
        T value;
        return readValue(from, value) && toDecimal(value, text);
    }
    static OSErr parse(const DecimalText& decimal, DescType toType, AEDesc* result) {
        T value;
        return fromDecimal(decimal, value) ? makeDescOf(toType, value, result)
                                           : OSErr{errAECoercionFail};
    }
};

template <typename T>
constexpr NumberForm formFor(DescType type) {
    using Of = Functions<T>;
    return {type, Of::read, Of::write, Of::print, Of::parse};
}

constexpr NumberForm kNumberForms[] = {
    formFor<SInt16>(typeSInt16),
    formFor<UInt16>(typeUInt16),
    formFor<SInt32>(typeSInt32),
    formFor<UInt32>(typeUInt32),
    formFor<SInt64>(typeSInt64),
    formFor<UInt64>(typeUInt64),
    formFor<FixedPoint>(typeFixed),
    formFor<float>(typeIEEE32BitFloatingPoint),
    formFor<double>(typeIEEE64BitFloatingPoint),
};

/// The table of coercions sends only types that are here.
const NumberForm& formOf(DescType type) {
    const NumberForm* form = kNumberForms;
    while (form->type != type) ++form;
    return *form;
}

}  // namespace

OSErr numberToNumber(const AEDesc* from, DescType toType, AEDesc* result) {
    Number number = 0;
    if (!formOf(from->descriptorType).read(from, number)) return errAECoercionFail;
    return formOf(toType).write(number, toType, result);
}

OSErr numberToText(const AEDesc* from, DescType toType, AEDesc* result) {
    std::string text;
    if (!formOf(from->descriptorType).print(from, text)) return errAECoercionFail;
    return writeText(std::u16string(text.begin(), text.end()), toType, result);
}

OSErr textToNumber(const AEDesc* from, DescType toType, AEDesc* result) {
    std::u16string units;
    if (const OSErr status = readText(from, units); status != noErr) return status;
    DecimalText decimal;
    if (!decimal.parse(units)) return errAECoercionFail;
    return formOf(toType).parse(decimal, toType, result);
}

}  // namespace osa
