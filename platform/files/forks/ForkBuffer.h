// A fork under change: in memory as long as it is small, then in a file without a name.
#pragma once

#include <memory>
#include <vector>

#include "platform/posix/WritableFile.h"

namespace osa {

class ForkBuffer : public ByteSource {
  public:
    /// A copy of the first `length` bytes of `fork`, or of all.
    static Result<std::shared_ptr<ForkBuffer>> copyOf(const ByteSource& fork, std::uint64_t length);

    std::uint64_t size() const override { return size_; }
    Result<void> readExactly(std::uint64_t offset, std::span<std::byte> target) const override;

    /// As ForkContent's. fileBoundsErr: longer than a resource fork can be.
    Result<void> write(std::uint64_t offset, ByteSpan bytes, std::uint64_t& done);
    Result<void> setSize(std::uint64_t size);

  private:
    Result<void> makeRoomFor(std::uint64_t size);

    std::uint64_t size_ = 0;
    std::vector<std::byte> memory_;  // all of it, unless there is a file
    std::unique_ptr<posix::WritableFile> file_;
};

}  // namespace osa
