// Byte sources in memory, parts of other sources and several in a row.
#include "platform/base/ByteSource.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>

namespace osa {

MemorySource::MemorySource(ByteSpan bytes) : bytes_(bytes.size()) {
    std::copy_n(bytes.data(), bytes.size(), bytes_.toFill().data());
}

Result<void> MemorySource::readExactly(std::uint64_t offset, std::span<std::byte> target) const {
    if (!CheckedRange{offset, target.size()}.fits(size())) return Failure(eofErr);
    std::copy_n(inMemory().data() + offset, target.size(), target.data());
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
    return std::make_shared<JoinedSource>(std::vector<std::shared_ptr<const ByteSource>>{
        std::make_shared<SubSource>(whole, CheckedRange{0, offset}),
        std::make_shared<MemorySource>(bytes),
        std::make_shared<SubSource>(whole, CheckedRange{offset + bytes.size(), whole->size()})});
}

Result<RangeBytes> readRange(const ByteSource& source, CheckedRange range) {
    if (!range.fits(source.size())) return Failure(eofErr);
    const ByteSpan known = source.inMemory();
    if (range.fits(known.size())) return RangeBytes(known.subspan(range.offset, range.length));
    ByteBlock own(range.length);
    OSA_CHECK(source.readExactly(range.offset, own.toFill()));
    return RangeBytes(std::move(own));
}

}  // namespace osa
