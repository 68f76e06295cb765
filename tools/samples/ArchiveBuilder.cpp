// The archive format's writing side: head bytes, shared tables, objects.
#include "tools/samples/ArchiveBuilder.h"

#include <bit>

namespace osa::samples {
namespace {

constexpr int kSmallestReference = -110;
constexpr std::uint8_t kTwoBytes = 0x81;
constexpr std::uint8_t kFourBytes = 0x82;
constexpr std::uint8_t kReal = 0x83;
constexpr std::uint8_t kNew = 0x84;
constexpr std::uint8_t kNil = 0x85;
constexpr std::uint8_t kEndOfObject = 0x86;
constexpr int kSystemVersion = 1000;

}  // namespace

std::string ArchiveBuilder::build(const nlohmann::ordered_json& root) {
    out_.u8(4).pascalString(order_ == ByteOrder::little ? "streamtyped" : "typedstream");
    integer(kSystemVersion);
    sharedString("@");
    value(root);
    return out_.takeText();
}

void ArchiveBuilder::integer(std::int64_t value) {
    const auto write = [&](std::size_t width) {
        if (order_ == ByteOrder::little) {
            out_.littleEndian(static_cast<std::uint64_t>(value), width);
        } else {
            out_.bigEndian(static_cast<std::uint64_t>(value), width);
        }
    };
    if (value >= kSmallestReference && value <= 127) {
        write(1);
    } else if (value >= -32768 && value <= 32767) {
        out_.u8(kTwoBytes);
        write(2);
    } else {
        out_.u8(kFourBytes);
        write(4);
    }
}

void ArchiveBuilder::rawString(const std::string& text) {
    integer(static_cast<std::int64_t>(text.size()));
    out_.text(text);
}

void ArchiveBuilder::reference(int number) {
    integer(number + kSmallestReference);
}

void ArchiveBuilder::sharedString(const std::string& text) {
    const auto [known, isNew] = strings_.try_emplace(text, static_cast<int>(strings_.size()));
    if (!isNew) return reference(known->second);
    out_.u8(kNew);
    rawString(text);
}

void ArchiveBuilder::classChain(const std::vector<ClassName>& chain) {
    for (const ClassName& each : chain) {
        const auto [known, isNew] = classes_.try_emplace(each.name, objects_);
        if (!isNew) return reference(known->second);
        ++objects_;
        out_.u8(kNew);
        sharedString(each.name);
        integer(each.version);
    }
    out_.u8(kNil);
}

void ArchiveBuilder::beginObject(const std::vector<ClassName>& chain) {
    out_.u8(kNew);
    ++objects_;
    classChain(chain);
}

void ArchiveBuilder::value(const nlohmann::ordered_json& json) {
    if (json.is_object()) {
        dictionary(json);
    } else if (json.is_array()) {
        array(json);
    } else if (json.is_boolean()) {
        number("c", json);
    } else if (json.is_number_integer()) {
        number("i", json);
    } else if (json.is_number()) {
        number("d", json);
    } else {
        string(json.get<std::string>());
    }
}

void ArchiveBuilder::string(const std::string& text) {
    beginObject({{"NSString", 1}, {"NSObject", 0}});
    sharedString("+");
    rawString(text);
    out_.u8(kEndOfObject);
}

void ArchiveBuilder::number(const char* encoding, const nlohmann::ordered_json& json) {
    beginObject({{"NSNumber", 0}, {"NSValue", 0}, {"NSObject", 0}});
    sharedString("*");
    const auto [known, isNew] = cStrings_.try_emplace(encoding, objects_);
    if (isNew) {
        ++objects_;
        out_.u8(kNew);
        sharedString(encoding);
    } else {
        reference(known->second);
    }
    sharedString(encoding);
    if (json.is_boolean()) {
        out_.u8(json.get<bool>() ? 1 : 0);
    } else if (json.is_number_integer()) {
        integer(json.get<std::int64_t>());
    } else {
        out_.u8(kReal);
        const auto bits = std::bit_cast<std::uint64_t>(json.get<double>());
        if (order_ == ByteOrder::little) {
            out_.littleEndian(bits, 8);
        } else {
            out_.bigEndian(bits, 8);
        }
    }
    out_.u8(kEndOfObject);
}

void ArchiveBuilder::count(std::size_t items) {
    sharedString("i");
    integer(static_cast<std::int64_t>(items));
}

void ArchiveBuilder::dictionary(const nlohmann::ordered_json& json) {
    beginObject({{"NSDictionary", 0}, {"NSObject", 0}});
    count(json.size());
    for (const auto& [key, member] : json.items()) {
        sharedString("@");
        string(key);
        sharedString("@");
        value(member);
    }
    out_.u8(kEndOfObject);
}

void ArchiveBuilder::array(const nlohmann::ordered_json& json) {
    beginObject({{"NSArray", 0}, {"NSObject", 0}});
    count(json.size());
    for (const auto& item : json) {
        sharedString("@");
        value(item);
    }
    out_.u8(kEndOfObject);
}

}  // namespace osa::samples
