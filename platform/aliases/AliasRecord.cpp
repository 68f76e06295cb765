// Reading alias records.
#include "platform/aliases/AliasRecord.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>

#include "platform/text/TextConverter.h"

namespace osa {
namespace {

enum Tag : std::int16_t {
    kEnd = -1,
    kMacPath = 2,
    kTargetName = 14,
    kVolumeName = 15,
    kPathOnVolume = 18,
    kMountPoint = 19,
};

constexpr std::size_t kExtras2 = 150;
constexpr std::size_t kExtras3 = 58;

/// Mac names hold "/" where POSIX names hold ":" and the other way round.
std::string posixName(std::u16string units) {
    for (char16_t& unit : units) {
        if (unit == u'/') {
            unit = u':';
        } else if (unit == u':') {
            unit = u'/';
        }
    }
    return utf8FromUTF16(units);
}

std::string fromMacRoman(std::string_view text) {
    std::u16string units;
    decodeText(asBytes(text), kTextEncodingMacRoman, units);
    return posixName(std::move(units));
}

/// A Pascal string in a field of fixed size; a length that runs over is cut.
std::string fixedName(ByteReader& reader, std::size_t size) {
    const ByteSpan field = reader.bytes(size);
    if (field.empty()) return {};
    const std::size_t length = std::min(std::to_integer<std::size_t>(field[0]), size - 1);
    return fromMacRoman(asText(field.subspan(1, length)));
}

/// A count of units and that many units.
std::string unicodeName(ByteReader value) {
    const std::size_t count = value.u16();
    std::u16string units;
    if (!decodeText(value.bytes(count * 2), kTextEncodingUTF16BE, units)) return {};
    return posixName(std::move(units));
}

std::string_view untilZero(std::string_view text) {
    return text.substr(0, text.find('\0'));
}

std::vector<std::string> macComponents(std::string_view path) {
    std::vector<std::string> components;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find(':'), path.size());
        components.push_back(fromMacRoman(path.substr(0, end)));
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return components;
}

void readFixedPart(ByteReader& reader, AliasRecord& record) {
    record.isFolder = reader.u16() == 1;
    if (record.version == 2) {
        record.volumeName = fixedName(reader, 28);
        reader.skip(8);  // volume date, file system, drive type
        record.parentID = reader.u32();
        record.targetName = fixedName(reader, 64);
        record.targetID = reader.u32();
        reader.seek(kExtras2);
    } else {
        reader.seek(24);
        record.parentID = reader.u32();
        record.targetID = reader.u32();
        reader.seek(kExtras3);
    }
}

void takeExtra(std::int16_t tag, ByteSpan value, AliasRecord& record) {
    switch (tag) {
        case kMacPath:
            record.macPath = macComponents(untilZero(asText(value)));
            break;
        case kTargetName: {
            std::string name = unicodeName(ByteReader(value));
            if (!name.empty()) record.targetName = std::move(name);
            break;
        }
        case kVolumeName: {
            std::string name = unicodeName(ByteReader(value));
            if (!name.empty()) record.volumeName = std::move(name);
            break;
        }
        case kPathOnVolume: {
            std::string_view path = untilZero(asText(value));
            while (path.starts_with('/')) path.remove_prefix(1);
            record.pathOnVolume = path;
            break;
        }
        case kMountPoint:
            record.mountPoint = untilZero(asText(value));
            break;
        default:
            break;
    }
}

}  // namespace

Result<AliasRecord> AliasRecord::parse(ByteSpan bytes) {
    ByteReader head(bytes);
    head.skip(4);
    const std::size_t size = head.u16();
    AliasRecord record;
    record.version = head.u16();
    const bool isKnown = record.version == 2 || record.version == 3;
    if (!head.ok() || !isKnown || size < kExtras3) return Failure(mapReadErr);
    ByteReader reader(bytes.first(std::min(size, bytes.size())));
    reader.skip(8);
    readFixedPart(reader, record);
    if (!reader.ok()) return Failure(mapReadErr);
    while (reader.remaining() >= 4) {
        const std::int16_t tag = reader.s16();
        const std::size_t length = reader.u16();
        if (tag == kEnd) break;
        const ByteSpan value = reader.bytes(length);
        if (!reader.ok()) break;
        takeExtra(tag, value, record);
        if (length % 2 != 0 && !reader.atEnd()) reader.skip(1);
    }
    return record;
}

}  // namespace osa
