// CFPropertyList: tells the forms apart, decodes text, copies trees.
#include <CoreFoundation/CFPropertyList.h>

#include <new>

#include "platform/cf/StringObject.h"
#include "platform/cf/plist/PropertyListForms.h"
#include "platform/text/TextConverter.h"

namespace {

using osa::ByteSpan;
using osa::plist::Maker;
using osa::plist::Value;

/// The encoding that an XML declaration names, as far as it can be true of text that begins in
/// ASCII.
UInt32 declaredEncoding(std::string_view text) {
    constexpr std::string_view kAttribute = "encoding=";
    if (!text.starts_with("<?xml")) return osa::kTextEncodingInvalid;
    const std::string_view declaration = text.substr(0, text.find("?>"));
    const std::size_t start = declaration.find(kAttribute);
    if (start == declaration.npos) return osa::kTextEncodingInvalid;
    const std::string_view value = declaration.substr(start + kAttribute.size());
    if (value.size() < 2 || (value[0] != '"' && value[0] != '\'')) return osa::kTextEncodingInvalid;
    const UInt32 encoding =
        osa::encodingForCharsetName(value.substr(1, value.find(value[0], 1) - 1));
    return (encoding & 0xFFFFFF) == osa::kTextEncodingUTF16 ? UInt32{osa::kTextEncodingUTF8}
                                                            : encoding;
}

/// UTF-16 without a mark shows by a zero beside its first character, which is always ASCII.
UInt32 unmarkedEncoding(ByteSpan bytes) {
    if (bytes.size() >= 2 && bytes[0] == std::byte{0}) return osa::kTextEncodingUTF16BE;
    if (bytes.size() >= 2 && bytes[1] == std::byte{0}) return osa::kTextEncodingUTF16LE;
    const UInt32 declared = declaredEncoding(osa::asText(bytes));
    return declared == osa::kTextEncodingInvalid ? UInt32{osa::kTextEncodingUTF8} : declared;
}

bool decode(ByteSpan bytes, std::u16string& text) {
    const osa::ByteOrderMark mark = osa::detectMark(bytes, true);
    if (mark.length > 0) return osa::decodeText(bytes.subspan(mark.length), mark.encoding, text);
    const UInt32 encoding = unmarkedEncoding(bytes);
    if (osa::decodeText(bytes, encoding, text)) return true;
    // Old lists in text are in the encoding of the system that wrote them.
    return osa::decodeText(bytes, osa::kTextEncodingMacRoman, text) && !osa::plist::isXML(text);
}

Value read(ByteSpan bytes, CFPropertyListMutabilityOptions options, CFPropertyListFormat& format) {
    const Maker maker(options);
    format = kCFPropertyListBinaryFormat_v1_0;
    if (osa::plist::isBinary(bytes)) return osa::plist::readBinary(bytes, maker);
    std::u16string text;
    if (bytes.empty() || !decode(bytes, text)) return {};
    const bool isXML = osa::plist::isXML(text);
    format = isXML ? kCFPropertyListXMLFormat_v1_0 : kCFPropertyListOpenStepFormat;
    return isXML ? osa::plist::readXML(text, maker) : osa::plist::readOldStyle(text, maker);
}

Value copy(CFTypeRef list, const Maker& maker, int depth);

Value copyDictionary(CFDictionaryRef dictionary, const Maker& maker, int depth) {
    const osa::plist::Entries entries = osa::plist::entriesOf(dictionary);
    std::vector<Value> keys;
    std::vector<Value> values;
    for (std::size_t i = 0; i < entries.keys.size(); ++i) {
        if (osa::cfCast<__CFString>(entries.keys[i]) == nullptr) return {};
        keys.push_back(Value::Retain(entries.keys[i]));
        values.push_back(copy(entries.values[i], maker, depth + 1));
        if (!values.back()) return {};
    }
    return maker.dictionary(keys, values);
}

Value copyArray(CFArrayRef array, const Maker& maker, int depth) {
    std::vector<Value> values;
    for (const CFTypeRef value : osa::plist::valuesOf(array)) {
        values.push_back(copy(value, maker, depth + 1));
        if (!values.back()) return {};
    }
    return maker.array(values);
}

Value copy(CFTypeRef list, const Maker& maker, int depth) {
    if (list == nullptr || depth > osa::plist::kMaxDepth) return {};
    const CFTypeID type = CFGetTypeID(list);
    if (type == CFDictionaryGetTypeID())
        return copyDictionary(static_cast<CFDictionaryRef>(list), maker, depth);
    if (type == CFArrayGetTypeID()) return copyArray(static_cast<CFArrayRef>(list), maker, depth);
    if (type == CFDataGetTypeID()) {
        const auto data = static_cast<CFDataRef>(list);
        return maker.data({reinterpret_cast<const std::byte*>(CFDataGetBytePtr(data)),
                           static_cast<std::size_t>(CFDataGetLength(data))});
    }
    if (const auto* const string = osa::cfCast<__CFString>(list))
        return maker.string(osa::unitsOf(string));
    return Value::Retain(list);
}

}  // namespace

CFPropertyListRef CFPropertyListCreateWithData(CFAllocatorRef, CFDataRef data,
                                               CFPropertyListMutabilityOptions options,
                                               CFPropertyListFormat* format, CFErrorRef* error) {
    if (error != nullptr) *error = nullptr;
    if (data == nullptr) return nullptr;
    const ByteSpan bytes(reinterpret_cast<const std::byte*>(CFDataGetBytePtr(data)),
                         static_cast<std::size_t>(CFDataGetLength(data)));
    try {
        CFPropertyListFormat found = 0;
        Value list = read(bytes, options, found);
        if (list && format != nullptr) *format = found;
        return list.leak();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

CFPropertyListRef CFPropertyListCreateFromXMLData(CFAllocatorRef allocator, CFDataRef data,
                                                  CFPropertyListMutabilityOptions options,
                                                  CFStringRef* errorString) {
    const CFPropertyListRef list =
        CFPropertyListCreateWithData(allocator, data, options, nullptr, nullptr);
    if (errorString != nullptr)
        *errorString =
            list != nullptr ? nullptr : osa::createString("The data is no property list.");
    return list;
}

CFDataRef CFPropertyListCreateData(CFAllocatorRef allocator, CFPropertyListRef list,
                                   CFPropertyListFormat format, CFOptionFlags, CFErrorRef* error) {
    if (error != nullptr) *error = nullptr;
    try {
        std::string bytes;
        const bool written =
            format == kCFPropertyListXMLFormat_v1_0      ? osa::plist::writeXML(list, bytes)
            : format == kCFPropertyListBinaryFormat_v1_0 ? osa::plist::writeBinary(list, bytes)
                                                         : false;
        if (!written) return nullptr;
        return CFDataCreate(allocator, reinterpret_cast<const UInt8*>(bytes.data()),
                            static_cast<CFIndex>(bytes.size()));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

CFDataRef CFPropertyListCreateXMLData(CFAllocatorRef allocator, CFPropertyListRef list) {
    return CFPropertyListCreateData(allocator, list, kCFPropertyListXMLFormat_v1_0, 0, nullptr);
}

CFPropertyListRef CFPropertyListCreateDeepCopy(CFAllocatorRef, CFPropertyListRef list,
                                               CFPropertyListMutabilityOptions options) {
    try {
        return copy(list, Maker(options), 1).leak();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

Boolean CFPropertyListIsValid(CFPropertyListRef list, CFPropertyListFormat format) {
    const CFDataRef data = CFPropertyListCreateData(nullptr, list, format, 0, nullptr);
    if (data != nullptr) CFRelease(data);
    return data != nullptr;
}
