// Builds non-keyed archives for tests. Everything is written out in full where it is needed:
// readers do not insist on the sharing that writers practise.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

#include "platform/base/ByteWriter.h"

namespace osa::test::archive {

/// An integer, little-endian where it takes more than a byte.
inline std::string integer(std::int64_t value) {
    ByteWriter writer;
    if (value >= -110 && value <= 127)
        writer.u8(static_cast<std::uint8_t>(value));
    else if (value >= -32768 && value <= 32767)
        writer.u8(0x81).littleEndian(static_cast<std::uint64_t>(value), 2);
    else
        writer.u8(0x82).littleEndian(static_cast<std::uint64_t>(value), 4);
    return writer.takeText();
}

/// Length and bytes.
inline std::string bytes(std::string_view text) {
    return integer(static_cast<std::int64_t>(text.size())) + std::string(text);
}

/// A group: type encodings and the values, already encoded.
inline std::string group(std::string_view types, std::string_view values) {
    return "\x84" + bytes(types) + std::string(values);
}

/// An object of a class and its ancestors, with its groups.
inline std::string object(std::initializer_list<std::string_view> classes,
                          std::string_view groups) {
    std::string result = "\x84";
    for (const std::string_view name : classes) result += "\x84\x84" + bytes(name) + integer(0);
    return result + "\x85" + std::string(groups) + "\x86";
}

inline std::string string(std::string_view text) {
    return object({"NSString", "NSObject"}, group("+", bytes(text)));
}

/// A number of the given type encoding; `value` already encoded.
inline std::string number(std::string_view type, std::string_view value) {
    return object({"NSNumber", "NSValue", "NSObject"},
                  group("*", "\x84\x84" + bytes(type)) + group(type, value));
}

inline std::string array(std::initializer_list<std::string> elements) {
    std::string groups = group("i", integer(static_cast<std::int64_t>(elements.size())));
    for (const std::string& element : elements) groups += group("@", element);
    return object({"NSArray", "NSObject"}, groups);
}

inline std::string dictionary(std::initializer_list<std::pair<std::string, std::string>> entries) {
    std::string groups = group("i", integer(static_cast<std::int64_t>(entries.size())));
    for (const auto& [key, value] : entries) groups += group("@", key) + group("@", value);
    return object({"NSMutableDictionary", "NSDictionary", "NSObject"}, groups);
}

/// The whole archive of a root object.
inline std::string archive(std::string_view root) {
    return "\x04\x0Bstreamtyped" + integer(1000) + group("@", root);
}

}  // namespace osa::test::archive
