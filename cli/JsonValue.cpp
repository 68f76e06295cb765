// The conversion to JSON, one function a type.
#include "cli/JsonValue.h"

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFRef.h>
#include <CoreFoundation/CFString.h>

#include <cmath>
#include <cstdio>
#include <map>
#include <string>

#include "cli/RecordFormat.h"

namespace osa::cli {
namespace {

Json stringValue(CFTypeRef value) {
    return toUTF8(static_cast<CFStringRef>(value));
}

Json booleanValue(CFTypeRef value) {
    return CFBooleanGetValue(static_cast<CFBooleanRef>(value)) != 0;
}

Json numberValue(CFTypeRef value) {
    const auto number = static_cast<CFNumberRef>(value);
    if (CFNumberIsFloatType(number)) {
        double real = 0;
        CFNumberGetValue(number, kCFNumberDoubleType, &real);
        return std::isfinite(real) ? Json(real) : Json(nullptr);
    }
    SInt64 integer = 0;
    CFNumberGetValue(number, kCFNumberSInt64Type, &integer);
    return integer;
}

Json dateValue(CFTypeRef value) {
    const CFAbsoluteTime time = CFDateGetAbsoluteTime(static_cast<CFDateRef>(value));
    if (!std::isfinite(time)) return nullptr;
    const CFGregorianDate date = CFAbsoluteTimeGetGregorianDate(time, nullptr);
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02dZ", static_cast<int>(date.year),
                  date.month, date.day, date.hour, date.minute, static_cast<int>(date.second));
    return text;
}

Json dataValue(CFTypeRef value) {
    static constexpr char digits[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const auto data = static_cast<CFDataRef>(value);
    const UInt8* const bytes = CFDataGetBytePtr(data);
    const CFIndex length = CFDataGetLength(data);
    std::string text;
    for (CFIndex i = 0; i < length; i += 3) {
        const CFIndex count = std::min<CFIndex>(3, length - i);
        UInt32 group = 0;
        for (CFIndex j = 0; j < 3; ++j) group = group << 8 | (j < count ? bytes[i + j] : 0U);
        for (CFIndex j = 0; j < 4; ++j) {
            text += j <= count ? digits[group >> (18 - 6 * j) & 0x3F] : '=';
        }
    }
    return text;
}

Json arrayValue(CFTypeRef value) {
    const auto array = static_cast<CFArrayRef>(value);
    Json items = Json::array();
    for (CFIndex i = 0; i < CFArrayGetCount(array); ++i) {
        items.push_back(jsonValue(CFArrayGetValueAtIndex(array, i)));
    }
    return items;
}

std::string description(CFTypeRef value) {
    return toUTF8(CFRef<CFStringRef>::Adopt(CFCopyDescription(value)).get());
}

void addMember(const void* key, const void* value, void* context) {
    auto& members = *static_cast<std::map<std::string, Json>*>(context);
    const bool isString = CFGetTypeID(key) == CFStringGetTypeID();
    members[isString ? toUTF8(static_cast<CFStringRef>(key)) : description(key)] = jsonValue(value);
}

Json dictionaryValue(CFTypeRef value) {
    std::map<std::string, Json> members;
    CFDictionaryApplyFunction(static_cast<CFDictionaryRef>(value), addMember, &members);
    Json object = Json::object();
    for (auto& [key, member] : members) object[key] = std::move(member);
    return object;
}

}  // namespace

Json jsonValue(CFTypeRef value) {
    if (value == nullptr) return nullptr;
    static const std::map<CFTypeID, Json (*)(CFTypeRef)> conversions = {
        {CFStringGetTypeID(), stringValue},
        {CFBooleanGetTypeID(), booleanValue},
        {CFNumberGetTypeID(), numberValue},
        {CFDateGetTypeID(), dateValue},
        {CFDataGetTypeID(), dataValue},
        {CFArrayGetTypeID(), arrayValue},
        {CFDictionaryGetTypeID(), dictionaryValue},
    };
    const auto conversion = conversions.find(CFGetTypeID(value));
    return conversion == conversions.end() ? Json(description(value)) : conversion->second(value);
}

}  // namespace osa::cli
