// Writing alias records.
#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <limits>

#include "platform/aliases/AliasRecord.h"
#include "platform/base/ByteWriter.h"
#include "platform/text/TextConverter.h"

namespace osa {
namespace {

constexpr std::size_t kLongestName = 63;
constexpr std::size_t kLongestVolumeName = 27;
constexpr std::size_t kLongestExtension = 6;
constexpr std::size_t kLargest = std::numeric_limits<std::uint16_t>::max();

/// The name as the Mac shows it; malformed bytes become U+FFFD.
std::u16string macUnits(std::string_view name) {
    std::u16string units;
    if (!utf16FromUTF8(name, units)) {
        for (const char byte : name)
            units += static_cast<unsigned char>(byte) < 0x80 ? char16_t(byte) : u'\uFFFD';
    }
    for (char16_t& unit : units) unit = unit == u':' ? u'/' : unit == u'/' ? u':' : unit;
    return units;
}

/// Appends the Mac Roman form; false when there is none.
bool appendMacRoman(std::string_view name, std::string& out) {
    const std::u16string units = macUnits(name);
    return encodeText(units, kTextEncodingMacRoman, 0, out) == units.size();
}

std::string hexadecimal(UInt32 number) {
    std::string digits;
    for (; number != 0 || digits.empty(); number >>= 4)
        digits.insert(digits.begin(), "0123456789ABCDEF"[number & 15]);
    return digits;
}

/// The name in at most `limit` bytes of Mac Roman, shortened around the ID when it must be.
std::string shortName(std::string_view name, UInt32 id, std::size_t limit) {
    std::string whole;
    if (appendMacRoman(name, whole) && whole.size() <= limit) return whole;
    whole.clear();
    encodeText(macUnits(name), kTextEncodingMacRoman, '?', whole);
    std::string ending = "#" + hexadecimal(id);
    const std::size_t dot = whole.rfind('.');
    if (dot != std::string::npos && dot > 0 && whole.size() - dot <= kLongestExtension) {
        ending += whole.substr(dot);
        whole.resize(dot);
    }
    whole.resize(std::min(whole.size(), limit - ending.size()));
    return whole + ending;
}

/// A field of fixed size with a length byte at its start.
void putFixed(ByteWriter& record, const std::string& name, std::size_t limit) {
    record.pascalString(name).fill(limit - name.size());
}

std::uint32_t wholeSeconds(AliasRecord::Date date) {
    return static_cast<std::uint32_t>(date >> 16);
}

/// Puts extras behind the fixed part; those without a value are left out.
class ExtrasWriter {
  public:
    explicit ExtrasWriter(ByteWriter& record) : record_(record) {}

    void put(AliasTag tag, ByteSpan value) {
        isTooLong_ = isTooLong_ || value.size() > kLargest;
        if (value.empty() || isTooLong_) return;
        record_.u16(static_cast<std::uint16_t>(tag)).u16(static_cast<std::uint16_t>(value.size()));
        record_.bytes(value).fill(value.size() % 2);
    }
    void put(AliasTag tag, std::string_view text) { put(tag, asBytes(text)); }
    void put(AliasTag tag, AliasRecord::Date date) {
        if (date != 0) put(tag, ByteWriter().u64(date).view());
    }
    void putUnicode(AliasTag tag, std::string_view name) {
        const std::u16string units = macUnits(name);
        if (units.empty() || units.size() > kLargest) return;
        ByteWriter value;
        value.u16(static_cast<std::uint16_t>(units.size()));
        for (const char16_t unit : units) value.u16(unit);
        put(tag, value.view());
    }
    bool isTooLong() const { return isTooLong_; }

  private:
    ByteWriter& record_;
    bool isTooLong_ = false;
};

/// Empty when a component has no Mac Roman form.
std::string joinedMacPath(const std::vector<std::string>& components) {
    std::string path;
    for (const std::string& component : components) {
        if (&component != &components.front()) path += ':';
        if (!appendMacRoman(component, path)) return {};
    }
    // Otherwise an empty component at the end would not show.
    if (!components.empty() && components.back().empty()) path += ':';
    // Nor would a "/" that belongs to the last name of a path on any volume.
    if (path.starts_with("/:") && path.ends_with('/')) path += '/';
    return path;
}

std::string macRoman(std::string_view name) {
    std::string text;
    encodeText(macUnits(name), kTextEncodingMacRoman, '?', text);
    return text;
}

ByteWriter folderIDValue(const std::vector<UInt32>& ids) {
    ByteWriter value;
    for (const UInt32 id : ids) value.u32(id);
    return value;
}

void putFixedPart(ByteWriter& out, const AliasRecord& record) {
    out.fourCC(record.userType).u16(0).u16(2).u16(record.isFolder ? 1 : 0);
    putFixed(out, shortName(record.volumeName, 0, kLongestVolumeName), kLongestVolumeName);
    out.u32(wholeSeconds(record.volumeCreated)).u16(record.fileSystem).u16(record.driveType);
    out.u32(record.parentID);
    putFixed(out, shortName(record.targetName, record.targetID, kLongestName), kLongestName);
    out.u32(record.targetID).u32(wholeSeconds(record.targetCreated));
    out.fourCC(record.type).fourCC(record.creator);
    out.u16(static_cast<std::uint16_t>(record.levelsUp));
    out.u16(static_cast<std::uint16_t>(record.levelsDown));
    out.u32(record.volumeAttributes).u16(record.fileSystemID).fill(10);
}

}  // namespace

Result<std::vector<std::byte>> AliasRecord::write() const {
    ByteWriter out;
    putFixedPart(out, *this);
    ExtrasWriter extras(out);
    extras.put(AliasTag::parentName, shortName(parentName, parentID, kLongestName));
    extras.put(AliasTag::volumeCreated, volumeCreated);
    extras.put(AliasTag::targetCreated, targetCreated);
    extras.put(AliasTag::folderIDs, folderIDValue(folderIDs).view());
    extras.put(AliasTag::macPath, joinedMacPath(macPath));
    extras.put(AliasTag::zoneName, macRoman(zoneName));
    extras.put(AliasTag::serverName, macRoman(serverName));
    extras.putUnicode(AliasTag::targetName, targetName);
    extras.putUnicode(AliasTag::volumeName, volumeName);
    extras.put(AliasTag::pathOnVolume, pathOnVolume);
    extras.put(AliasTag::mountPoint, mountPoint);
    out.u16(static_cast<std::uint16_t>(AliasTag::end)).u16(0);
    if (extras.isTooLong() || out.size() > kLargest) return Failure(pathTooLongErr);
    out.patch(4, out.size(), 2);
    return out.take();
}

}  // namespace osa
