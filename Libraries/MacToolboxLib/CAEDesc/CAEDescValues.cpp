// Typed getters: for each, the types it reads as they are and those it coerces others to.
#include <CoreServices/AEDataModel.h>
#include <CoreServices/FixMath.h>
#include <CoreServices/MacErrors.h>

#include <initializer_list>

#include "Libraries/MacToolboxLib/CAEDesc/CAEDesc.h"

namespace {

template <typename T>
T DataAs(const CAEDescReader& desc) {
    T value{};
    if (AEGetDescDataSize(&desc.GetDesc()) < static_cast<Size>(sizeof value)) {
        desc.FailOSErr(errAECorruptData);
    }
    desc.GetData(reinterpret_cast<char*>(&value), sizeof value);
    return value;
}

/// The data as a `Stored`, converted as C++ converts numbers: narrowed to the low bits, extended by
/// the sign.
template <typename T, typename Stored>
T Converted(const CAEDescReader& desc) {
    return static_cast<T>(DataAs<Stored>(desc));
}

template <typename Real>
Fixed FixedOfReal(const CAEDescReader& desc) {
    return X2Fix(static_cast<double>(DataAs<Real>(desc)));
}

double RealOfFixed(const CAEDescReader& desc) {
    return Fix2X(DataAs<Fixed>(desc));
}

template <bool value>
bool Constant(const CAEDescReader&) {
    return value;
}

bool NonZeroByte(const CAEDescReader& desc) {
    return DataAs<UInt8>(desc) != 0;
}

/// The items of a list that has as many as there are targets.
bool GetShorts(const CAEDescReader& desc, std::initializer_list<SInt16*> targets) {
    if (!desc.Is(typeAEList) || desc.CountItems() != static_cast<SInt32>(targets.size())) {
        return false;
    }
    SInt32 index = 0;
    CAEDesc item;
    for (SInt16* const target : targets) {
        desc.GetItem(++index, item, typeWildCard);
        *target = item.GetShort();
    }
    return true;
}

/// A type that a getter reads as it is. The reader answers whether the value is there.
template <typename T>
struct DirectType {
    DescType type;
    T (*read)(const CAEDescReader& desc);
};

template <typename T>
using DirectTypes = std::initializer_list<DirectType<T>>;
using TargetTypes = std::initializer_list<DescType>;

template <typename T>
bool ReadDirectly(const CAEDescReader& desc, DirectTypes<T> directTypes, T& value) {
    for (const DirectType<T>& each : directTypes) {
        if (!desc.Is(each.type)) continue;
        value = each.read(desc);
        return true;
    }
    return false;
}

/// Coerces to the first target that does not answer errAECoercionFail; any other failure, or the
/// last one, is thrown.
void CoerceToFirst(const CAEDescReader& desc, TargetTypes targets, CAEDesc& out) {
    for (const DescType target : targets) {
        try {
            desc.CoerceTo(target, out);
            return;
        } catch (OSStatus status) {
            const bool isLast = &target == targets.end() - 1;
            if (status != errAECoercionFail || isLast) throw;
        }
    }
}

template <typename T>
T Get(const CAEDescReader& desc, DirectTypes<T> directTypes, TargetTypes targets) {
    T value{};
    if (ReadDirectly(desc, directTypes, value)) return value;
    CAEDesc coerced;
    CoerceToFirst(desc, targets, coerced);
    // A handler may have answered with a type that was not asked for.
    if (!ReadDirectly(coerced, directTypes, value)) desc.FailOSErr(errAECoercionFail);
    return value;
}

constexpr DirectTypes<double> kRealTypes = {{typeIEEE64BitFloatingPoint, Converted<double, double>},
                                            {typeIEEE32BitFloatingPoint, Converted<double, float>},
                                            {typeFixed, RealOfFixed},
                                            {typeSInt32, Converted<double, SInt32>},
                                            {typeSInt16, Converted<double, SInt16>}};

}  // namespace

bool CAEDescReader::GetBool() const {
    return Get<bool>(
        *this,
        {{typeFalse, Constant<false>}, {typeTrue, Constant<true>}, {typeBoolean, NonZeroByte}},
        {typeBoolean});
}

SInt16 CAEDescReader::GetShort() const {
    return Get<SInt16>(
        *this, {{typeSInt16, Converted<SInt16, SInt16>}, {typeSInt32, Converted<SInt16, SInt32>}},
        {typeSInt16});
}

UInt16 CAEDescReader::GetUShort() const {
    return Get<UInt16>(*this,
                       {{typeSInt16, Converted<UInt16, SInt16>},
                        {typeSInt32, Converted<UInt16, SInt32>},
                        {typeUInt32, Converted<UInt16, UInt32>}},
                       {typeUInt32, typeSInt32, typeSInt16});
}

SInt32 CAEDescReader::GetLong() const {
    return Get<SInt32>(
        *this, {{typeSInt32, Converted<SInt32, SInt32>}, {typeSInt16, Converted<SInt32, SInt16>}},
        {typeSInt32});
}

UInt32 CAEDescReader::GetULong() const {
    return Get<UInt32>(*this,
                       {{typeSInt32, Converted<UInt32, SInt32>},
                        {typeUInt32, Converted<UInt32, UInt32>},
                        {typeSInt16, Converted<UInt32, SInt16>}},
                       {typeUInt32, typeSInt32, typeSInt16});
}

SInt64 CAEDescReader::GetLongLong() const {
    return Is(typeSInt64) ? DataAs<SInt64>(*this) : GetLong();
}

Fixed CAEDescReader::GetFixed() const {
    return Get<Fixed>(*this,
                      {{typeFixed, Converted<Fixed, Fixed>},
                       {typeIEEE32BitFloatingPoint, FixedOfReal<float>},
                       {typeIEEE64BitFloatingPoint, FixedOfReal<double>},
                       {typeSInt32, Converted<Fixed, SInt32>},
                       {typeSInt16, Converted<Fixed, SInt16>}},
                      {typeFixed, typeIEEE64BitFloatingPoint, typeIEEE32BitFloatingPoint,
                       typeSInt32, typeSInt16});
}

double CAEDescReader::GetDouble() const {
    return Get<double>(*this, kRealTypes,
                       {typeIEEE64BitFloatingPoint, typeIEEE32BitFloatingPoint, typeFixed,
                        typeSInt32, typeSInt16});
}

float CAEDescReader::GetFloat() const {
    return static_cast<float>(Get<double>(*this, kRealTypes,
                                          {typeIEEE32BitFloatingPoint, typeIEEE64BitFloatingPoint,
                                           typeFixed, typeSInt32, typeSInt16}));
}

OSType CAEDescReader::GetEnumeration() const {
    return Get<OSType>(*this,
                       {{typeEnumerated, DataAs<OSType>},
                        {typeType, DataAs<OSType>},
                        {typeAbsoluteOrdinal, DataAs<OSType>}},
                       {typeEnumerated});
}

OSType CAEDescReader::GetTypeType() const {
    return Get<OSType>(*this,
                       {{typeEnumerated, DataAs<OSType>},
                        {typeProperty, DataAs<OSType>},
                        {typeType, DataAs<OSType>},
                        {typeAbsoluteOrdinal, DataAs<OSType>}},
                       {typeType});
}

SInt64 CAEDescReader::GetLongDateTime() const {
    return Get<SInt64>(*this, {{typeLongDateTime, DataAs<SInt64>}}, {typeLongDateTime});
}

void CAEDescReader::GetRGBColor(RGBColor* color) const {
    SInt16 red;
    SInt16 green;
    SInt16 blue;
    if (GetShorts(*this, {&red, &green, &blue})) {
        *color = {static_cast<UInt16>(red), static_cast<UInt16>(green), static_cast<UInt16>(blue)};
    } else {
        *color = Get<RGBColor>(*this, {{typeRGBColor, DataAs<RGBColor>}}, {typeRGBColor});
    }
}

void CAEDescReader::GetQDRect(Rect* rect) const {
    Rect made;
    const bool isList = GetShorts(*this, {&made.left, &made.top, &made.right, &made.bottom});
    *rect = isList ? made : Get<Rect>(*this, {{typeQDRectangle, DataAs<Rect>}}, {typeQDRectangle});
}

void CAEDescReader::GetQDPoint(Point* point) const {
    Point made;
    const bool isList = GetShorts(*this, {&made.h, &made.v});
    *point = isList ? made : Get<Point>(*this, {{typeQDPoint, DataAs<Point>}}, {typeQDPoint});
}
