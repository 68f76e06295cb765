// Byte sources in memory and parts of other sources.
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

Result<std::vector<std::byte>> readRange(const ByteSource& source, CheckedRange range) {
    if (!range.fits(source.size())) return Failure(eofErr);
    std::vector<std::byte> bytes(range.length);
    OSA_CHECK(source.readExactly(range.offset, bytes));
    return bytes;
}

}  // namespace osa
