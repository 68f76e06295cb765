// SCoreFoundation<T>: the library's owning holder of one Core Foundation reference.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <utility>

template <typename T>
class SCoreFoundation {
  public:
    SCoreFoundation() = default;
    /// Takes over a reference that the caller owns (from Create or Copy); null is allowed.
    explicit SCoreFoundation(T owned) : mRef(owned) {}
    SCoreFoundation(const SCoreFoundation& other) : mRef(other.mRef) {
        if (mRef != nullptr) CFRetain(mRef);
    }
    SCoreFoundation(SCoreFoundation&& other) noexcept : mRef(std::exchange(other.mRef, nullptr)) {}
    ~SCoreFoundation() {
        if (mRef != nullptr) CFRelease(mRef);
    }

    SCoreFoundation& operator=(const SCoreFoundation& other) {
        SCoreFoundation copy(other);
        std::swap(mRef, copy.mRef);
        return *this;
    }
    SCoreFoundation& operator=(SCoreFoundation&& other) noexcept {
        std::swap(mRef, other.mRef);
        return *this;
    }
    /// Takes over an owned reference. The old one is released unless it is the same object: then
    /// the holder keeps the count that came with the new one.
    SCoreFoundation& operator=(CF_CONSUMED T owned) {
        const T old = std::exchange(mRef, owned);
        if (old != owned && old != nullptr) CFRelease(old);
        return *this;
    }

    /// Borrowed.
    T Get() const { return mRef; }
    operator T() const { return mRef; }  // NOLINT: passed to platform calls all over the library
    /// Gives the reference to the caller, who releases it.
    [[nodiscard]] T Release() { return std::exchange(mRef, nullptr); }

  private:
    T mRef = nullptr;
};
