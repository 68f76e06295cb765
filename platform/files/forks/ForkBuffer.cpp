// Keeping a fork under change.
#include "platform/files/forks/ForkBuffer.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>

namespace osa {
namespace {

constexpr std::uint64_t kMostInMemory = 1 << 20;
constexpr std::uint64_t kLargestFork = 0xFFFF0000;  // AppleDouble's offsets
constexpr std::uint64_t kChunk = 65536;

}  // namespace

Result<std::shared_ptr<ForkBuffer>> ForkBuffer::copyOf(const ByteSource& fork,
                                                       std::uint64_t length) {
    auto buffer = std::make_shared<ForkBuffer>();
    length = std::min(length, fork.size());
    OSA_CHECK(buffer->makeRoomFor(length));
    std::vector<std::byte> chunk;
    for (std::uint64_t offset = 0; offset < length; offset += chunk.size()) {
        chunk.resize(std::min(length - offset, kChunk));
        OSA_CHECK(fork.readExactly(offset, chunk));
        std::uint64_t done = 0;
        OSA_CHECK(buffer->write(offset, chunk, done));
    }
    return buffer;
}

Result<void> ForkBuffer::readExactly(std::uint64_t offset, std::span<std::byte> target) const {
    if (!CheckedRange{offset, target.size()}.fits(size_)) return Failure(eofErr);
    if (file_ != nullptr) return file_->readExactly(offset, target);
    std::copy_n(memory_.data() + offset, target.size(), target.data());
    return {};
}

Result<void> ForkBuffer::makeRoomFor(std::uint64_t size) {
    if (size > kLargestFork) return Failure(fileBoundsErr);
    if (size <= kMostInMemory || file_ != nullptr) return {};
    OSA_TRY(auto file, posix::WritableFile::temporary());
    std::uint64_t done = 0;
    OSA_CHECK(file->write(0, memory_, done));
    file_ = std::move(file);
    memory_ = {};
    return {};
}

Result<void> ForkBuffer::write(std::uint64_t offset, ByteSpan bytes, std::uint64_t& done) {
    done = 0;
    if (bytes.empty()) return {};  // as files do: no zeros before nothing
    if (!CheckedRange{offset, bytes.size()}.fits(kLargestFork)) return Failure(fileBoundsErr);
    const std::uint64_t end = offset + bytes.size();
    OSA_CHECK(makeRoomFor(std::max(end, size_)));
    if (file_ == nullptr) {
        if (end > size_) memory_.resize(end);
        std::copy(bytes.begin(), bytes.end(),
                  memory_.begin() + static_cast<std::ptrdiff_t>(offset));
        done = bytes.size();
        size_ = memory_.size();
        return {};
    }
    const auto written = file_->write(offset, bytes, done);
    size_ = std::max(size_, done == 0 ? 0 : offset + done);
    return written;
}

Result<void> ForkBuffer::setSize(std::uint64_t size) {
    OSA_CHECK(makeRoomFor(size));
    if (file_ != nullptr) {
        OSA_CHECK(file_->setSize(size));
    } else {
        memory_.resize(size);
    }
    size_ = size;
    return {};
}

}  // namespace osa
