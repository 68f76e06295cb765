// One function a class. What each class writes:
//
//   string            + UTF-8                         date              d seconds since 2001
//   dictionary        i count, then @ key, @ value    data              i length, [length c]
//   array, set        i or I count, then @ each       url               c relative, (@ base,) @
//   string number            * encoding, value               attributed string @ string, attributes
#include "platform/foundation/ArchivedObjects.h"

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFString.h>

#include <algorithm>
#include <utility>

namespace osa {
namespace {

using Kind = ArchivedValue::Kind;
using Values = std::span<const ArchivedValue>;

/// What any object costs, on top of its content.
constexpr UInt64 kObjectWeight = 16;

const ConvertedObject kNothing;

ConvertedObject leaf(CFTypeRef created, std::size_t size = 0) {
    return {CFRef<CFTypeRef>::Adopt(created), 0, kObjectWeight + size};
}

/// The object at `index`; an empty one where there is no object.
const ConvertedObject& objectAt(Values values, std::size_t index) {
    if (index >= values.size() || values[index].kind != Kind::object) return kNothing;
    return values[index].object == nullptr ? kNothing : *values[index].object;
}

void addChild(ConvertedObject& parent, const ConvertedObject& child) {
    parent.height = std::max(parent.height, child.height + 1);
    parent.weight += child.weight;
}

/// Another object's string, for classes that are no more than a string to a property list.
ConvertedObject stringOf(const ConvertedObject& object) {
    const bool isString = object.object && CFGetTypeID(object.object.get()) == CFStringGetTypeID();
    return isString ? object : ConvertedObject();
}

ConvertedObject convertString(Values values) {
    if (values.empty() || values[0].code != '+') return {};
    const ByteSpan text = values[0].bytes;
    return leaf(
        CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.data()),
                                static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, false),
        text.size());
}

/// The number of elements that `values` promise; none when it is more than there are. Absent where
/// the first value is no count at all.
std::optional<std::size_t> countOf(Values values, std::size_t valuesEach, bool& contradiction) {
    if (values.empty() || values[0].kind != Kind::integer) return std::nullopt;
    const SInt64 count = values[0].integer;
    contradiction = count < 0 || static_cast<UInt64>(count) > (values.size() - 1) / valuesEach;
    if (contradiction) return std::nullopt;
    return static_cast<std::size_t>(count);
}

ConvertedObject convertDictionary(Values values, bool& contradiction) {
    const auto count = countOf(values, 2, contradiction);
    if (!count) return {};
    auto result = leaf(CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    for (std::size_t i = 0; i < *count; ++i) {
        const ConvertedObject& key = objectAt(values, 1 + 2 * i);
        const ConvertedObject& value = objectAt(values, 2 + 2 * i);
        if (!key.object || !value.object) continue;
        CFDictionarySetValue(
            static_cast<CFMutableDictionaryRef>(const_cast<void*>(result.object.get())),
            key.object.get(), value.object.get());
        addChild(result, key);
        addChild(result, value);
    }
    return result;
}

ConvertedObject convertArray(Values values, bool& contradiction) {
    const auto count = countOf(values, 1, contradiction);
    if (!count) return {};
    auto result = leaf(CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks));
    for (std::size_t i = 1; i <= *count; ++i) {
        const ConvertedObject& element = objectAt(values, i);
        if (!element.object) continue;
        CFArrayAppendValue(static_cast<CFMutableArrayRef>(const_cast<void*>(result.object.get())),
                           element.object.get());
        addChild(result, element);
    }
    return result;
}

template <typename T>
ConvertedObject number(CFNumberType type, T value) {
    return leaf(CFNumberCreate(kCFAllocatorDefault, type, &value));
}

ConvertedObject convertNumber(Values values) {
    if (values.size() < 2 || values[0].code != '*') return {};
    const ArchivedValue& value = values[1];
    if (value.kind == Kind::real) {
        return value.code == 'f' ? number(kCFNumberFloat32Type, static_cast<float>(value.real))
                                 : number(kCFNumberFloat64Type, value.real);
    }
    if (value.kind != Kind::integer) return {};
    switch (value.code) {
        case 'c':
        case 'B':
            // Truth values have no encoding of their own.
            if (value.integer == 0 || value.integer == 1) {
                CFBooleanRef const truth = value.integer != 0 ? kCFBooleanTrue : kCFBooleanFalse;
                return leaf(CFRetain(truth));
            }
            return number(kCFNumberSInt8Type, static_cast<SInt8>(value.integer));
        case 'C':
        case 's':
            return number(kCFNumberSInt16Type, static_cast<SInt16>(value.integer));
        case 'S':
        case 'i':
        case 'l':
            return number(kCFNumberSInt32Type, static_cast<SInt32>(value.integer));
        default:
            return number(kCFNumberSInt64Type, value.integer);
    }
}

ConvertedObject convertDate(Values values) {
    if (values.empty() || values[0].kind != Kind::real) return {};
    return leaf(CFDateCreate(kCFAllocatorDefault, values[0].real));
}

ConvertedObject convertData(Values values) {
    if (values.size() < 2 || values[1].kind != Kind::bytes) return {};
    const ByteSpan bytes = values[1].bytes;
    return leaf(CFDataCreate(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
                             static_cast<CFIndex>(bytes.size())),
                bytes.size());
}

ConvertedObject convertURL(Values values) {
    if (values.empty() || values[0].kind != Kind::integer) return {};
    return stringOf(objectAt(values, values[0].integer == 0 ? 1 : 2));
}

}  // namespace

ArchivedClass archivedClassNamed(std::string_view name) {
    static constexpr std::pair<std::string_view, ArchivedClass> kClasses[] = {
        {"NSString", ArchivedClass::string},
        {"NSDictionary", ArchivedClass::dictionary},
        {"NSArray", ArchivedClass::array},
        {"NSSet", ArchivedClass::array},
        {"NSNumber", ArchivedClass::number},
        {"NSDate", ArchivedClass::date},
        {"NSData", ArchivedClass::data},
        {"NSURL", ArchivedClass::url},
        {"NSAttributedString", ArchivedClass::attributedString},
    };
    for (const auto& [known, archivedClass] : kClasses)
        if (known == name) return archivedClass;
    return ArchivedClass::unknown;
}

std::optional<ConvertedObject> convertArchived(ArchivedClass archivedClass, Values values) {
    bool contradiction = false;
    ConvertedObject result = [&]() -> ConvertedObject {
        switch (archivedClass) {
            case ArchivedClass::string:
                return convertString(values);
            case ArchivedClass::dictionary:
                return convertDictionary(values, contradiction);
            case ArchivedClass::array:
                return convertArray(values, contradiction);
            case ArchivedClass::number:
                return convertNumber(values);
            case ArchivedClass::date:
                return convertDate(values);
            case ArchivedClass::data:
                return convertData(values);
            case ArchivedClass::url:
                return convertURL(values);
            case ArchivedClass::attributedString:
                return stringOf(objectAt(values, 0));
            case ArchivedClass::unknown:
                break;
        }
        return {};
    }();
    if (contradiction) return std::nullopt;
    return result;
}

}  // namespace osa
