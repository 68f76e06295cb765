// UniqueFd: the owner of one file descriptor.
#pragma once

#include <utility>

namespace osa::posix {

class UniqueFd {
  public:
    UniqueFd() = default;
    explicit UniqueFd(int descriptor) : descriptor_(descriptor) {}
    UniqueFd(UniqueFd&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    UniqueFd& operator=(UniqueFd other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~UniqueFd();

    int get() const { return descriptor_; }
    /// The descriptor is the caller's from now on.
    int release() { return std::exchange(descriptor_, -1); }
    bool valid() const { return descriptor_ >= 0; }

  private:
    int descriptor_ = -1;
};

}  // namespace osa::posix
