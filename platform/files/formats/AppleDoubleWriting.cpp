// Putting Finder information into AppleDouble files.
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
        // An offset into header and table is that of an empty entry; one past the end stays there.
        const std::uint64_t moved =
            offset < tableEnd ? offset : std::min(offset + shift, kLargestOffset);
        start.u32(id).u32(static_cast<std::uint32_t>(moved)).u32(length);
    }
    start.bytes(bytes);
    const CheckedRange rest = {tableEnd, source_->size() - tableEnd};
    return Source(std::make_shared<JoinedSource>(std::vector<Source>{
        std::make_shared<MemorySource>(start.take()), std::make_shared<SubSource>(source_, rest)}));
}

Source AppleDouble::make(const FinderInfoBytes& bytes) {
    ByteWriter file;
    file.u32(kDoubleMagic).u32(kVersion2).text("Mac OS X        ").u16(1);
    file.u32(finderInfo).u32(kHeaderSize + kEntrySize).u32(kInfoSize).bytes(bytes);
    return std::make_shared<MemorySource>(file.take());
}

}  // namespace osa
