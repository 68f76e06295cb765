// Reading bookmark data.
#include "platform/aliases/Bookmark.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <optional>

namespace osa {
namespace {

constexpr std::uint32_t kPathComponents = 0x1004;
constexpr std::uint32_t kVolumePath = 0x2002;
constexpr std::uint32_t kVolumeName = 0x2010;
constexpr std::uint32_t kStringType = 0x0101;
constexpr std::uint32_t kArrayType = 0x0601;
constexpr std::uint32_t kTableMagic = 0xFFFFFFFE;
constexpr std::size_t kEntrySize = 12;
constexpr int kMostTables = 16;
constexpr std::size_t kMostComponents = 512;
constexpr std::size_t kLongestPath = 4096;

struct Item {
    std::uint32_t type = 0;
    ByteSpan value;
};

std::optional<Item> itemAt(const ByteReader& body, std::uint32_t offset) {
    ByteReader head = body.sub(offset, 8);
    const std::uint32_t length = head.u32LittleEndian();
    const std::uint32_t type = head.u32LittleEndian();
    ByteReader value = body.sub(std::uint64_t{offset} + 8, length);
    if (!head.ok() || !value.ok()) return std::nullopt;
    return Item{type, value.rest()};
}

std::string stringAt(const ByteReader& body, std::uint32_t offset) {
    const auto item = itemAt(body, offset);
    if (!item || item->type != kStringType || item->value.size() > kLongestPath) return {};
    return std::string(asText(item->value));
}

bool isStep(const std::string& name) {
    return !name.empty() && name != "." && name != ".." &&
           name.find_first_of(std::string_view("/\0", 2)) == std::string::npos;
}

/// Empty when one of them is no name.
std::vector<std::string> componentsAt(const ByteReader& body, std::uint32_t offset) {
    std::vector<std::string> components;
    const auto item = itemAt(body, offset);
    if (!item || item->type != kArrayType || item->value.size() / 4 > kMostComponents) return {};
    ByteReader offsets(item->value);
    while (offsets.remaining() >= 4) {
        components.push_back(stringAt(body, offsets.u32LittleEndian()));
        if (!isStep(components.back())) return {};
    }
    return components;
}

void takeEntry(const ByteReader& body, std::uint32_t key, std::uint32_t offset,
               Bookmark& bookmark) {
    if (key == kPathComponents && bookmark.components.empty()) {
        bookmark.components = componentsAt(body, offset);
    } else if (key == kVolumePath && bookmark.volumePath.empty()) {
        bookmark.volumePath = stringAt(body, offset);
    } else if (key == kVolumeName && bookmark.volumeName.empty()) {
        bookmark.volumeName = stringAt(body, offset);
    }
}

/// The offset of the next table; 0 when there is none, or this is no table.
std::uint32_t readTable(const ByteReader& body, std::uint32_t offset, Bookmark& bookmark) {
    ByteReader table = body.sub(offset, body.size() - std::min<std::size_t>(offset, body.size()));
    table.skip(4);
    if (table.u32LittleEndian() != kTableMagic) return 0;
    table.skip(4);
    const std::uint32_t next = table.u32LittleEndian();
    std::uint32_t count = table.u32LittleEndian();
    for (; count > 0 && table.ok() && table.remaining() >= kEntrySize; --count) {
        const std::uint32_t key = table.u32LittleEndian();
        const std::uint32_t item = table.u32LittleEndian();
        table.skip(4);
        takeEntry(body, key, item, bookmark);
    }
    return table.ok() ? next : 0;
}

}  // namespace

bool Bookmark::isBookmark(ByteSpan bytes) {
    ByteReader reader(bytes);
    if (reader.text(4) != "book") return false;
    const std::uint32_t size = reader.u32LittleEndian();
    const std::string_view mark = reader.text(4);
    if (size == 0) return mark == "mark";
    return reader.ok() && size <= bytes.size() && mark == std::string_view("\0\0\x04\x10", 4);
}

Result<Bookmark> Bookmark::parse(ByteSpan bytes) {
    if (!isBookmark(bytes)) return Failure(mapReadErr);
    ByteReader head(bytes);
    head.skip(8);
    const bool isFile = head.text(4) == "mark";
    if (isFile) head.skip(4);
    const std::uint32_t headerSize = head.u32LittleEndian();
    head.seek(headerSize);
    if (!head.ok() || headerSize < head.position()) return Failure(mapReadErr);
    ByteReader body(head.rest());
    Bookmark bookmark;
    std::uint32_t table = ByteReader(body).u32LittleEndian();
    for (int i = 0; i < kMostTables && table != 0; ++i) table = readTable(body, table, bookmark);
    if (bookmark.components.empty()) return Failure(mapReadErr);
    return bookmark;
}

AliasRecord Bookmark::record() const {
    AliasRecord record;
    for (const std::string& component : components)
        record.pathOnVolume += (record.pathOnVolume.empty() ? "" : "/") + component;
    record.targetName = components.empty() ? std::string() : components.back();
    record.volumeName = volumeName;
    record.mountPoint = volumePath;
    return record;
}

}  // namespace osa
