// Reading alias records.
#include "platform/aliases/AliasRecord.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>

#include "platform/text/TextConverter.h"

namespace osa {
namespace {

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

std::vector<std::string> macComponents(std::string_view value) {
    // Some writers leave a zero behind every colon.
    std::string text(value);
    std::erase(text, '\0');
    std::string_view path = text;
    // "/:Applications:X.app/" stands for a place on whatever volume the system lies on.
    if (path.starts_with("/:") && path.ends_with('/')) path.remove_suffix(1);
    std::vector<std::string> components;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find(':'), path.size());
        components.push_back(fromMacRoman(path.substr(0, end)));
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return components;
}

/// Seconds since 1904 as a date.
AliasRecord::Date wholeSeconds(std::uint32_t seconds) {
    return AliasRecord::Date{seconds} << 16;
}

void readFixedPart2(ByteReader& reader, AliasRecord& record) {
    record.volumeName = fixedName(reader, 28);
    record.volumeCreated = wholeSeconds(reader.u32());
    record.fileSystem = reader.u16();
    record.driveType = reader.u16();
    record.parentID = reader.u32();
    record.targetName = fixedName(reader, 64);
    record.targetID = reader.u32();
    record.targetCreated = wholeSeconds(reader.u32());
    record.type = reader.fourCC();
    record.creator = reader.fourCC();
    record.levelsUp = reader.s16();
    record.levelsDown = reader.s16();
    record.volumeAttributes = reader.u32();
    record.fileSystemID = reader.u16();
    reader.seek(kExtras2);
}

void readFixedPart3(ByteReader& reader, AliasRecord& record) {
    record.volumeCreated = reader.u64();
    record.fileSystem = reader.u16();
    record.fileSystemID = reader.u16();
    record.driveType = reader.u16();
    record.parentID = reader.u32();
    record.targetID = reader.u32();
    record.targetCreated = reader.u64();
    record.volumeAttributes = reader.u32();
    reader.seek(kExtras3);
}

void takeName(std::string name, std::string& target) {
    if (!name.empty()) target = std::move(name);
}

void takeDate(ByteReader value, AliasRecord::Date& date) {
    if (value.size() == sizeof date) date = value.u64();
}

void takeExtra(AliasTag tag, ByteSpan value, AliasRecord& record) {
    using enum AliasTag;
    ByteReader reader(value);
    switch (tag) {
        case parentName:
            record.parentName = fromMacRoman(untilZero(asText(value)));
            break;
        case folderIDs:
            record.folderIDs.clear();
            while (reader.remaining() >= 4) record.folderIDs.push_back(reader.u32());
            break;
        case macPath:
            record.macPath = macComponents(asText(value));
            break;
        case zoneName:
            record.zoneName = fromMacRoman(asText(value));
            break;
        case serverName:
            record.serverName = fromMacRoman(asText(value));
            break;
        case targetName:
            takeName(unicodeName(reader), record.targetName);
            break;
        case volumeName:
            takeName(unicodeName(reader), record.volumeName);
            break;
        case volumeCreated:
            takeDate(reader, record.volumeCreated);
            break;
        case targetCreated:
            takeDate(reader, record.targetCreated);
            break;
        case pathOnVolume: {
            std::string_view path = untilZero(asText(value));
            while (path.starts_with('/')) path.remove_prefix(1);
            record.pathOnVolume = path;
            break;
        }
        case mountPoint:
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
    record.userType = reader.fourCC();
    reader.skip(4);  // size and version
    record.isFolder = reader.u16() == 1;
    if (record.version == 2) {
        readFixedPart2(reader, record);
    } else {
        readFixedPart3(reader, record);
    }
    if (!reader.ok()) return Failure(mapReadErr);
    while (reader.remaining() >= 4) {
        const auto tag = static_cast<AliasTag>(reader.s16());
        const std::size_t length = reader.u16();
        if (tag == AliasTag::end) break;
        const ByteSpan value = reader.bytes(length);
        if (!reader.ok()) break;
        takeExtra(tag, value, record);
        if (length % 2 != 0 && !reader.atEnd()) reader.skip(1);
    }
    return record;
}

}  // namespace osa
