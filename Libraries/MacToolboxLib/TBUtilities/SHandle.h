// Owning holder of one relocatable block, the holder of a block's lock state, and DisposeAHandle.
#pragma once

#include <CoreServices/MacMemory.h>

#include <utility>

/// Gives a handle back, whoever it belongs to: one that still belongs to an open resource file is
/// released there, any other is disposed of. Null is allowed.
void DisposeAHandle(Handle handle);

/// Owns one handle and gives it back with DisposeAHandle.
class SHandle {
  public:
    SHandle() = default;
    /// Takes over `owned`; null is allowed.
    explicit SHandle(Handle owned) : mHandle(owned) {}
    SHandle(const SHandle&) = delete;
    SHandle& operator=(const SHandle&) = delete;
    ~SHandle() { DisposeAHandle(mHandle); }

    /// Takes over `owned` in place of the old handle, which is given back unless it is the same
    /// one.
    void Set(Handle owned) {
        if (owned != mHandle) DisposeAHandle(std::exchange(mHandle, owned));
    }
    /// Borrowed.
    Handle Get() const { return mHandle; }
    /// Gives the handle to the caller.
    [[nodiscard]] Handle Release() { return std::exchange(mHandle, nullptr); }

  private:
    Handle mHandle = nullptr;
};

/// Saves a block's state and restores it when destroyed.
class SHandleState {
  public:
    explicit SHandleState(Handle handle) : mHandle(handle), mState(HGetState(handle)) {}
    SHandleState(const SHandleState&) = delete;
    SHandleState& operator=(const SHandleState&) = delete;
    ~SHandleState() { HSetState(mHandle, mState); }

  private:
    Handle mHandle;  // weak
    SInt8 mState;
};
