// Byte sources in memory and parts of other sources.
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

Result<RangeBytes> readRange(const ByteSource& source, CheckedRange range) {
    if (!range.fits(source.size())) return Failure(eofErr);
    const ByteSpan known = source.inMemory();
    if (range.fits(known.size())) return RangeBytes(known.subspan(range.offset, range.length));
    ByteBlock own(range.length);
    OSA_CHECK(source.readExactly(range.offset, own.toFill()));
    return RangeBytes(std::move(own));
}

}  // namespace osa
