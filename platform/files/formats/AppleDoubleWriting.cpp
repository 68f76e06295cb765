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

Result<Source> AppleDouble::withResourceFork(ByteSpan fork) const {
    if (source_->size() + kEntrySize > kLargestOffset) return Failure(fileBoundsErr);
    const Entry* const entry = find(resourceFork);
    if (entry == nullptr) return addResourceFork(fork);
    ByteWriter content;
    content.bytes(fork);
    const auto whole =
        std::make_shared<JoinedSource>(std::vector<Source>{source_, inMemory(content)});
    ByteWriter place;
    place.u32(static_cast<std::uint32_t>(source_->size()));
    place.u32(static_cast<std::uint32_t>(fork.size()));
    const auto row = static_cast<std::uint64_t>(entry - entries_.data());
    return overlaid(whole, kHeaderSize + row * kEntrySize + 4, place.view());
}

Result<Source> AppleDouble::addResourceFork(ByteSpan fork) const {
    OSA_TRY(const auto fixed, attributes());
    if (!fixed.empty()) return Failure(unimpErr);
    const std::uint64_t count = entries_.size();
    const std::uint64_t tableEnd = kHeaderSize + count * kEntrySize;
    if (count >= 0xFFFF || tableEnd > source_->size()) return Failure(fileBoundsErr);
    OSA_TRY(const auto head, readRange(*source_, {0, kHeaderSize - 2}));
    OSA_TRY(const auto table, readRange(*source_, {kHeaderSize, count * kEntrySize}));
    ByteWriter start;
    start.bytes(head).u16(static_cast<std::uint16_t>(count + 1));
    for (ByteReader rows(table); rows.remaining() >= kEntrySize;) {
        start.u32(rows.u32()).u32(movedOffset(rows.u32(), tableEnd, kEntrySize)).u32(rows.u32());
    }
    start.u32(resourceFork).u32(static_cast<std::uint32_t>(source_->size() + kEntrySize));
    start.u32(static_cast<std::uint32_t>(fork.size()));
    ByteWriter content;
    content.bytes(fork);
    const CheckedRange rest = {tableEnd, source_->size() - tableEnd};
    return Source(std::make_shared<JoinedSource>(std::vector<Source>{
        inMemory(start), std::make_shared<SubSource>(source_, rest), inMemory(content)}));
}

Source AppleDouble::make(const FinderInfoBytes& bytes, ByteSpan fork) {
    const std::uint16_t count = fork.empty() ? 1 : 2;
    const auto content = static_cast<std::uint32_t>(kHeaderSize + count * kEntrySize);
    ByteWriter file;
    file.u32(kDoubleMagic).u32(kVersion2).text("Mac OS X        ").u16(count);
    file.u32(finderInfo).u32(content).u32(kInfoSize);
    if (!fork.empty()) {
        file.u32(resourceFork).u32(content + kInfoSize);
        file.u32(static_cast<std::uint32_t>(fork.size()));
    }
    file.bytes(bytes).bytes(fork);
    return inMemory(file);
}

}  // namespace osa
