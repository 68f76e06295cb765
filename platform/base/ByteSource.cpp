// Byte sources in memory, parts of other sources and several in a row.
#include "platform/base/ByteSource.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>

namespace osa {

Result<void> MemorySource::readExactly(std::uint64_t offset, std::span<std::byte> target) const {
    if (!CheckedRange{offset, target.size()}.fits(bytes_.size())) return Failure(eofErr);
    std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(offset), target.size(),
                target.begin());
    return {};
}

Result<void> SubSource::readExactly(std::uint64_t offset, std::span<std::byte> target) const {
    if (!CheckedRange{offset, target.size()}.fits(range_.length)) return Failure(eofErr);
    return whole_->readExactly(range_.offset + offset, target);
}

ByteSpan SubSource::inMemory() const {
    const ByteSpan whole = whole_->inMemory();
    return range_.fits(whole.size()) ? whole.subspan(range_.offset, range_.length) : ByteSpan{};
}

std::uint64_t JoinedSource::size() const {
    std::uint64_t size = 0;
    for (const auto& part : parts_) size += part->size();
    return size;
}

Result<void> JoinedSource::readExactly(std::uint64_t offset, std::span<std::byte> target) const {
    if (!CheckedRange{offset, target.size()}.fits(size())) return Failure(eofErr);
    for (const auto& part : parts_) {
        const CheckedRange here = CheckedRange{offset, target.size()}.clamped(part->size());
        OSA_CHECK(part->readExactly(here.offset, target.first(here.length)));
        target = target.subspan(here.length);
        offset -= here.offset;
    }
    return {};
}

std::shared_ptr<const ByteSource> overlaid(std::shared_ptr<const ByteSource> whole,
                                           std::uint64_t offset, ByteSpan bytes) {
    using Bytes = std::vector<std::byte>;
    return std::make_shared<JoinedSource>(std::vector<std::shared_ptr<const ByteSource>>{
        std::make_shared<SubSource>(whole, CheckedRange{0, offset}),
        std::make_shared<MemorySource>(Bytes(bytes.begin(), bytes.end())),
        std::make_shared<SubSource>(whole, CheckedRange{offset + bytes.size(), whole->size()})});
}

Result<std::vector<std::byte>> readRange(const ByteSource& source, CheckedRange range) {
    if (!range.fits(source.size())) return Failure(eofErr);
    std::vector<std::byte> bytes(range.length);
    OSA_CHECK(source.readExactly(range.offset, bytes));
    return bytes;
}

}  // namespace osa
