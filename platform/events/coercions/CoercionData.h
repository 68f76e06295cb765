// What every coercion needs: a descriptor's data as a view, descriptors made of bytes or values,
// and an owning holder.
#pragma once

#include <CoreServices/AEDataModel.h>
#include <CoreServices/MacErrors.h>

#include <cstring>
#include <string_view>
#include <type_traits>

#include "platform/events/ItemBlock.h"

namespace osa {

/// AECreateDesc for any run of bytes; memFullErr for one that no descriptor can hold.
OSErr makeDesc(DescType type, std::string_view bytes, AEDesc* result);

/// A descriptor of the value's bytes as they are.
template <typename T>
OSErr makeDescOf(DescType type, const T& value, AEDesc* result) {
    static_assert(std::is_trivially_copyable_v<T>);
    return makeDesc(type, {reinterpret_cast<const char*>(&value), sizeof value}, result);
}

/// Reads data that is exactly one T; false for data of another size.
template <typename T>
bool readValue(const AEDesc* desc, T& value) {
    static_assert(std::is_trivially_copyable_v<T>);
    const ByteSpan bytes = dataOf(*desc);
    if (bytes.size() != sizeof value) return false;
    std::memcpy(&value, bytes.data(), sizeof value);
    return true;
}

/// Owns one descriptor.
class OwnedDesc {
  public:
    OwnedDesc() { AEInitializeDesc(&desc_); }
    ~OwnedDesc() { AEDisposeDesc(&desc_); }
    OwnedDesc(const OwnedDesc&) = delete;
    OwnedDesc& operator=(const OwnedDesc&) = delete;

    const AEDesc* get() const { return &desc_; }
    /// For a call that changes the descriptor, or fills it while it is still null.
    AEDesc* out() { return &desc_; }
    /// Gives the descriptor to the caller.
    AEDesc leak() {
        const AEDesc given = desc_;
        AEInitializeDesc(&desc_);
        return given;
    }

  private:
    AEDesc desc_;
};

}  // namespace osa
