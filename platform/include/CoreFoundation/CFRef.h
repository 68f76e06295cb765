// CFRef<T>: the owning holder of one Core Foundation reference, for C++ callers.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <cassert>
#include <utility>

/// There is no constructor from a bare reference: whoever makes a holder says whether the reference
/// is theirs already (Adopt, after Create or Copy) or only borrowed (Retain, after Get).
template <typename T>
class CFRef {
  public:
    CFRef() = default;
    CFRef(const CFRef& other) : ref_(other.ref_) {
        if (ref_ != nullptr) CFRetain(ref_);
    }
    CFRef(CFRef&& other) noexcept : ref_(std::exchange(other.ref_, nullptr)) {}
    ~CFRef() { reset(); }
    CFRef& operator=(CFRef other) noexcept {
        std::swap(ref_, other.ref_);
        return *this;
    }

    /// Takes over a reference the caller owns; null gives an empty holder.
    static CFRef Adopt(T owned) {
        CFRef holder;
        holder.ref_ = owned;
        return holder;
    }
    /// Adds a reference of its own to a borrowed one; null gives an empty holder.
    static CFRef Retain(T borrowed) {
        if (borrowed != nullptr) CFRetain(borrowed);
        return Adopt(borrowed);
    }

    T get() const { return ref_; }
    explicit operator bool() const { return ref_ != nullptr; }
    /// Gives the reference to the caller, who releases it.
    [[nodiscard]] T leak() { return std::exchange(ref_, nullptr); }
    void reset() {
        if (ref_ != nullptr) CFRelease(std::exchange(ref_, nullptr));
    }
    /// For a function that hands back an owned reference through a pointer; the holder must be
    /// empty.
    T* out() {
        assert(ref_ == nullptr);
        return &ref_;
    }

  private:
    T ref_ = nullptr;
};
