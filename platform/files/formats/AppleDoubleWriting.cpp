// Putting Finder information and resource forks into AppleDouble files.
#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <limits>

#include "platform/base/ByteWriter.h"
#include "platform/files/formats/AppleDouble.h"

namespace osa {
namespace {

using Source = std::shared_ptr<const ByteSource>;
constexpr std::uint64_t kInfoSize = std::tuple_size_v<FinderInfoBytes>;
constexpr std::uint64_t kLargestOffset = std::numeric_limits<std::uint32_t>::max();

/// The offset of an entry in a file whose bytes behind the table move up. One into header and table
/// is that of an empty entry; one past the end stays there.
std::uint32_t movedOffset(std::uint64_t offset, std::uint64_t tableEnd, std::uint64_t shift) {
    return static_cast<std::uint32_t>(offset < tableEnd ? offset
                                                        : std::min(offset + shift, kLargestOffset));
}

Source inMemory(ByteWriter& bytes) {
    return std::make_shared<MemorySource>(bytes.take());
}

}  // namespace

Result<Source> AppleDouble::withFinderInfo(const FinderInfoBytes& bytes) const {
    const Entry* const entry = find(finderInfo);
    const std::uint64_t tableEnd = kHeaderSize + entries_.size() * kEntrySize;
    const bool hasRoom =
        entry != nullptr && entry->range.length >= kInfoSize && entry->range.offset >= tableEnd;
    if (!hasRoom) return insertFinderInfo(bytes);
    return overlaid(source_, entry->range.offset, bytes);
}

Result<Source> AppleDouble::insertFinderInfo(const FinderInfoBytes& bytes) const {
    const std::uint64_t tableSize = entries_.size() * kEntrySize;
    const std::uint64_t tableEnd = kHeaderSize + tableSize;
    const bool isNew = find(finderInfo) == nullptr;
    const std::uint64_t count = entries_.size() + (isNew ? 1 : 0);
    const std::uint64_t newTableEnd = kHeaderSize + count * kEntrySize;
    const std::uint64_t shift = newTableEnd - tableEnd + kInfoSize;
    if (count > 0xFFFF || source_->size() > kLargestOffset - shift) return Failure(fileBoundsErr);

    OSA_TRY(const auto head, readRange(*source_, {0, kHeaderSize - 2}));
    OSA_TRY(const auto table, readRange(*source_, {kHeaderSize, tableSize}));
    ByteWriter start;
    start.bytes(head).u16(static_cast<std::uint16_t>(count));
    const auto putInfoRow = [&] {
        start.u32(finderInfo).u32(static_cast<std::uint32_t>(newTableEnd)).u32(kInfoSize);
    };
    if (isNew) putInfoRow();
    bool isPlaced = isNew;
    ByteReader rows(table);
    while (rows.remaining() >= kEntrySize) {
        const std::uint32_t id = rows.u32();
        const std::uint64_t offset = rows.u32();
        const std::uint32_t length = rows.u32();
        if (id == finderInfo && !std::exchange(isPlaced, true)) {
            putInfoRow();
            continue;
        }
        start.u32(id).u32(movedOffset(offset, tableEnd, shift)).u32(length);
    }
    start.bytes(bytes);
    const CheckedRange rest = {tableEnd, source_->size() - tableEnd};
    return Source(std::make_shared<JoinedSource>(
        std::vector<Source>{inMemory(start), std::make_shared<SubSource>(source_, rest)}));
}

Source AppleDouble::part(std::uint64_t from, std::uint64_t to) const {
    return std::make_shared<SubSource>(source_, CheckedRange{from, to - from});
}

/// Whether no other entry and no attribute has any of its bytes.
Result<bool> AppleDouble::isAlone(const Entry& entry) const {
    const CheckedRange& own = entry.range;
    if (own.length == 0 || own.offset < tableEnd()) return false;
    const auto isApart = [&](const CheckedRange& range) {
        return range.length == 0 || range.offset >= own.offset + own.length ||
               own.offset >= range.offset + range.length;
    };
    OSA_TRY(const auto block, attributeBlock());
    const bool isApartFromAttributes =
        !block || std::all_of(block->rows.begin(), block->rows.end(), [&](const AttributeRow& row) {
            return isApart({row.offset, row.size});
        });
    return isApartFromAttributes &&
           std::all_of(entries_.begin(), entries_.end(), [&](const Entry& other) {
               return &other == &entry || isApart(other.range);
           });
}

/// Whether attributes, which are found by their offsets from the file's start, would be moved by a
/// change of length at `offset`.
Result<bool> AppleDouble::hasAttributesBehind(std::uint64_t offset) const {
    OSA_TRY(const auto block, attributeBlock());
    if (!block) return false;
    const CheckedRange& whole = find(finderInfo)->range;
    if (whole.offset + whole.length > offset) return true;
    return std::any_of(block->rows.begin(), block->rows.end(), [&](const AttributeRow& row) {
        return std::uint64_t{row.offset} + row.size > offset;
    });
}

Result<Source> AppleDouble::withResourceFork(const Source& fork) const {
    const Entry* const entry = find(resourceFork);
    if (entry == nullptr) return addResourceFork(fork);
    const CheckedRange old = entry->range;
    const std::uint64_t end = old.offset + old.length;
    OSA_TRY(const bool alone, isAlone(*entry));
    if (fork->size() == old.length) {
        if (old.length == 0) return source_;
        if (alone) {
            return Source(std::make_shared<JoinedSource>(
                std::vector<Source>{part(0, old.offset), fork, part(end, source_->size())}));
        }
    }
    OSA_TRY(const bool isHeld, hasAttributesBehind(old.offset));
    std::vector<Entry> rows = entries_;
    Entry& row = rows[static_cast<std::size_t>(entry - entries_.data())];
    if (!alone || isHeld) {
        row.range = {source_->size(), fork->size()};
        return assemble(rows, {part(tableEnd(), source_->size()), fork});
    }
    for (Entry& other : rows) {
        if (other.range.offset >= end) other.range.offset += fork->size() - old.length;
    }
    row.range = {old.offset, fork->size()};
    return assemble(rows, {part(tableEnd(), old.offset), fork, part(end, source_->size())});
}

/// The attributes behind the Finder information count from the file's start.
Result<Source> AppleDouble::withMovedAttributes(std::uint32_t distance) const {
    OSA_TRY(const auto block, attributeBlock());
    if (!block || block->start < tableEnd()) return source_;
    constexpr std::size_t kAreaEnd = 8;
    constexpr std::size_t kDataStart = 12;
    ByteWriter moved;
    moved.bytes(block->bytes);
    const auto move = [&](std::size_t place) {
        ByteReader reader(moved.view());
        reader.seek(place);
        moved.patch(place, std::min(reader.u32() + std::uint64_t{distance}, kLargestOffset), 4);
    };
    move(kAreaEnd);
    move(kDataStart);
    for (const AttributeRow& row : block->rows) move(row.place);
    return overlaid(source_, block->start, moved.view());
}

Result<Source> AppleDouble::addResourceFork(const Source& fork) const {
    if (entries_.size() >= 0xFFFF) return Failure(fileBoundsErr);
    OSA_TRY(const Source moved, withMovedAttributes(kEntrySize));
    std::vector<Entry> rows = entries_;
    for (Entry& row : rows) {
        if (row.range.offset >= tableEnd()) row.range.offset += kEntrySize;
    }
    rows.push_back({resourceFork, {source_->size() + kEntrySize, fork->size()}});
    const CheckedRange rest{tableEnd(), source_->size() - tableEnd()};
    return assemble(rows, {std::make_shared<SubSource>(moved, rest), fork});
}

/// Entries are written as they are, not as they promised to be: what is added behind the last is
/// none of theirs.
Result<Source> AppleDouble::assemble(const std::vector<Entry>& rows,
                                     std::vector<Source> content) const {
    OSA_TRY(const auto head, readRange(*source_, {0, kHeaderSize - 2}));
    ByteWriter start;
    start.bytes(head).u16(static_cast<std::uint16_t>(rows.size()));
    for (const Entry& row : rows) {
        start.u32(row.id).u32(static_cast<std::uint32_t>(row.range.offset));
        start.u32(static_cast<std::uint32_t>(row.range.length));
    }
    content.insert(content.begin(), inMemory(start));
    auto whole = std::make_shared<JoinedSource>(std::move(content));
    if (whole->size() > kLargestOffset) return Failure(fileBoundsErr);
    return Source(std::move(whole));
}

Source AppleDouble::make(const FinderInfoBytes& bytes, const Source& fork) {
    const bool hasFork = fork != nullptr && fork->size() > 0;
    const std::uint16_t count = hasFork ? 2 : 1;
    const auto content = static_cast<std::uint32_t>(kHeaderSize + count * kEntrySize);
    ByteWriter file;
    file.u32(kDoubleMagic).u32(kVersion2).text("Mac OS X        ").u16(count);
    file.u32(finderInfo).u32(content).u32(kInfoSize);
    if (hasFork) {
        file.u32(resourceFork).u32(content + kInfoSize);
        file.u32(static_cast<std::uint32_t>(fork->size()));
    }
    file.bytes(bytes);
    if (!hasFork) return inMemory(file);
    return std::make_shared<JoinedSource>(std::vector<Source>{inMemory(file), fork});
}

}  // namespace osa
