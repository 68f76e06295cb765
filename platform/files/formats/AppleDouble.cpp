// Reading the entry table, and the entries that have a form of their own.
#include "platform/files/formats/AppleDouble.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>

#include "platform/base/FourCC.h"

namespace osa {
namespace {

// Dates in entry 8 count from 2000-01-01, those of version 1 from 1904-01-01.
constexpr std::int64_t kUnixOf2000 = 946684800;
constexpr std::int64_t kUnixOf1904 = -2082844800;

// The attribute block: 34 bytes of Finder information and padding, a head, then its entries.
constexpr std::uint64_t kAttributeBlock = 34;
constexpr std::uint64_t kAttributeHead = 36;
constexpr std::uint64_t kLargestAttributeArea = 65536;

std::optional<std::int64_t> dateFrom2000(ByteReader& reader) {
    const std::int32_t seconds = reader.s32();
    if (!reader.ok() || seconds == INT32_MIN) return std::nullopt;
    return seconds + kUnixOf2000;
}

std::optional<std::int64_t> dateFrom1904(ByteReader& reader) {
    const std::uint32_t seconds = reader.u32();
    if (!reader.ok() || seconds == 0) return std::nullopt;
    return seconds + kUnixOf1904;
}

}  // namespace

Result<AppleDouble> AppleDouble::parse(std::shared_ptr<const ByteSource> source) {
    if (source->size() < kHeaderSize) return Failure(paramErr);
    OSA_TRY(const auto header, readRange(*source, {0, kHeaderSize}));
    ByteReader reader(header);
    const std::uint32_t magic = reader.u32();
    const std::uint32_t version = reader.u32();
    if (magic != kDoubleMagic && magic != kSingleMagic) return Failure(paramErr);
    if (version != kVersion1 && version != kVersion2) return Failure(paramErr);
    reader.skip(16);
    const std::uint64_t count = reader.u16();

    AppleDouble parsed;
    parsed.kind_ = magic == kDoubleMagic ? Kind::appleDouble : Kind::appleSingle;
    parsed.version_ = version;
    const CheckedRange table =
        CheckedRange{kHeaderSize, count * kEntrySize}.clamped(source->size());
    OSA_TRY(const auto bytes, readRange(*source, table));
    ByteReader rows(bytes);
    parsed.entries_.reserve(rows.size() / kEntrySize);
    while (rows.remaining() >= kEntrySize) {
        Entry entry;
        entry.id = rows.u32();
        const std::uint32_t offset = rows.u32();
        const std::uint32_t length = rows.u32();
        entry.range = CheckedRange{offset, length}.clamped(source->size());
        parsed.entries_.push_back(entry);
    }
    parsed.source_ = std::move(source);
    return parsed;
}

const AppleDouble::Entry* AppleDouble::find(std::uint32_t id) const {
    const auto found = std::find_if(entries_.begin(), entries_.end(),
                                    [id](const Entry& entry) { return entry.id == id; });
    return found == entries_.end() ? nullptr : &*found;
}

std::shared_ptr<const ByteSource> AppleDouble::content(std::uint32_t id) const {
    const Entry* const entry = find(id);
    return std::make_shared<SubSource>(source_, entry == nullptr ? CheckedRange{} : entry->range);
}

Result<FinderInfoBytes> AppleDouble::finderInfoContent() const {
    const Entry* const entry = find(finderInfo);
    if (entry == nullptr) return FinderInfoBytes{};
    const std::uint64_t length = std::min<std::uint64_t>(entry->range.length, 32);
    OSA_TRY(const auto bytes, readRange(*source_, {entry->range.offset, length}));
    return finderInfoBytes(bytes);
}

Result<AppleDouble::Dates> AppleDouble::dates() const {
    Dates dates;
    const bool isOld = version_ == kVersion1 && find(fileDates) == nullptr;
    const Entry* const entry = find(isOld ? fileInfo : fileDates);
    if (entry == nullptr) return dates;
    const std::uint64_t length = std::min<std::uint64_t>(entry->range.length, 16);
    OSA_TRY(const auto bytes, readRange(*source_, {entry->range.offset, length}));
    ByteReader reader(bytes);
    const auto next = isOld ? dateFrom1904 : dateFrom2000;
    dates.created = next(reader);
    dates.modified = next(reader);
    dates.backedUp = next(reader);
    if (!isOld) dates.accessed = next(reader);
    return dates;
}

Result<std::optional<AppleDouble::AttributeBlock>> AppleDouble::attributeBlock() const {
    std::optional<AttributeBlock> block;
    const Entry* const entry = find(finderInfo);
    if (entry == nullptr || entry->range.length < kAttributeBlock + kAttributeHead) return block;
    const std::uint64_t start = entry->range.offset + kAttributeBlock;
    const std::uint64_t length =
        std::min(entry->range.length - kAttributeBlock, kLargestAttributeArea);
    OSA_TRY(RangeBytes bytes, readRange(*source_, {start, length}));
    ByteReader reader(bytes);
    if (reader.fourCC() != FourCC("ATTR")) return block;
    block = AttributeBlock{start, std::move(bytes), {}};
    reader.seek(34);
    // Where the values begin there are no more rows, whatever the count says.
    std::uint64_t end = start + reader.size();
    for (unsigned left = reader.u16(); left > 0; --left) {
        // Entries lie on multiples of 4, counted from the file's start.
        reader.skip((4 - (start + reader.position()) % 4) % 4);
        const std::size_t row = reader.position();
        const std::uint32_t offset = reader.u32();
        const std::uint32_t size = reader.u32();
        reader.skip(2);
        std::string_view name = reader.text(reader.u8());
        if (offset > start && size > 0) end = std::min<std::uint64_t>(end, offset);
        if (!reader.ok() || start + reader.position() > end) break;
        name = name.substr(0, name.find('\0'));
        block->rows.push_back({row, offset, size, std::string(name)});
    }
    return block;
}

Result<std::vector<AppleDouble::Attribute>> AppleDouble::attributes() const {
    std::vector<Attribute> found;
    OSA_TRY(const auto block, attributeBlock());
    if (!block) return found;
    for (const AttributeRow& row : block->rows) {
        found.push_back({row.name, CheckedRange{row.offset, row.size}.clamped(source_->size())});
    }
    return found;
}

}  // namespace osa
