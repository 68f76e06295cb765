// Values of property lists.
#include "platform/cf/plist/PropertyListTree.h"

#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFNumber.h>

#include <algorithm>

#include "platform/cf/NumberObject.h"
#include "platform/cf/StringObject.h"

namespace osa::plist {

Value Maker::leaf(CFStringRef string) const {
    const auto fixed = CFRef<CFStringRef>::Adopt(string);
    if (!mutableLeaves_) return Value::Retain(fixed.get());
    return Value::Adopt(CFStringCreateMutableCopy(kCFAllocatorDefault, 0, fixed.get()));
}

Value Maker::string(std::u16string_view units) const {
    if (std::ranges::any_of(units, [](char16_t unit) { return unit >= 0x80; }))
        return leaf(createString(units));
    return macRomanString(asBytes(std::string(units.begin(), units.end())));
}

Value Maker::macRomanString(ByteSpan bytes) const {
    return leaf(createMacRomanString(bytes));
}

Value Maker::data(ByteSpan bytes) const {
    const auto fixed = CFRef<CFDataRef>::Adopt(
        CFDataCreate(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
                     static_cast<CFIndex>(bytes.size())));
    if (!mutableLeaves_) return Value::Retain(fixed.get());
    return Value::Adopt(CFDataCreateMutableCopy(kCFAllocatorDefault, 0, fixed.get()));
}

Value Maker::array(const std::vector<Value>& values) const {
    std::vector<const void*> bare;
    for (const Value& value : values) bare.push_back(value.get());
    const auto fixed = CFRef<CFArrayRef>::Adopt(CFArrayCreate(kCFAllocatorDefault, bare.data(),
                                                              static_cast<CFIndex>(bare.size()),
                                                              &kCFTypeArrayCallBacks));
    if (!mutableContainers_) return Value::Retain(fixed.get());
    return Value::Adopt(CFArrayCreateMutableCopy(kCFAllocatorDefault, 0, fixed.get()));
}

Value Maker::dictionary(const std::vector<Value>& keys, const std::vector<Value>& values) const {
    const auto made = CFRef<CFMutableDictionaryRef>::Adopt(
        CFDictionaryCreateMutable(kCFAllocatorDefault, 0, &kCFCopyStringDictionaryKeyCallBacks,
                                  &kCFTypeDictionaryValueCallBacks));
    for (std::size_t i = 0; i < keys.size(); ++i)
        CFDictionarySetValue(made.get(), keys[i].get(), values[i].get());
    if (mutableContainers_) return Value::Retain(made.get());
    return Value::Adopt(CFDictionaryCreateCopy(kCFAllocatorDefault, made.get()));
}

Value Maker::uid(std::uint64_t number) const {
    return dictionary({Value::Adopt(createString(kUIDKey))}, {unsignedInteger(number)});
}

Value integer(std::int64_t number) {
    return Value::Adopt(createInteger(number));
}

Value unsignedInteger(std::uint64_t number) {
    return Value::Adopt(createUnsigned(number));
}

Value real(double number) {
    return Value::Adopt(createReal(number));
}

Value date(double absoluteTime) {
    return Value::Adopt(CFDateCreate(kCFAllocatorDefault, absoluteTime));
}

Value boolean(bool truth) {
    return Value::Retain(truth ? kCFBooleanTrue : kCFBooleanFalse);
}

std::vector<CFTypeRef> valuesOf(CFArrayRef array) {
    std::vector<CFTypeRef> values(static_cast<std::size_t>(CFArrayGetCount(array)));
    CFArrayGetValues(array, CFRangeMake(0, CFArrayGetCount(array)), values.data());
    return values;
}

Entries entriesOf(CFDictionaryRef dictionary) {
    const auto count = static_cast<std::size_t>(CFDictionaryGetCount(dictionary));
    Entries entries{std::vector<CFTypeRef>(count), std::vector<CFTypeRef>(count)};
    CFDictionaryGetKeysAndValues(dictionary, entries.keys.data(), entries.values.data());
    return entries;
}

bool isUID(CFDictionaryRef dictionary, std::uint64_t& number) {
    if (CFDictionaryGetCount(dictionary) != 1) return false;
    const Entries entries = entriesOf(dictionary);
    const auto* const value = cfCast<__CFNumber>(entries.values[0]);
    if (!isString(entries.keys[0], kUIDKey) || value == nullptr || value->isReal()) return false;
    if (value->integer < 0 && !value->isHugeUnsigned) return false;
    number = static_cast<std::uint64_t>(value->integer);
    return true;
}

}  // namespace osa::plist
