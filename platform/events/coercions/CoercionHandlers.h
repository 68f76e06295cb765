// The tables of installed coercion handlers, and asking what is in them.
#pragma once

#include <CoreServices/AEDataModel.h>

namespace osa {

/// What is to be coerced: a descriptor, or the pointer that AECoercePtr was given, of which a
/// descriptor is made only when somebody needs one.
class CoercionSource {
  public:
    explicit CoercionSource(const AEDesc* desc);
    CoercionSource(DescType type, const void* data, Size size);
    ~CoercionSource();
    CoercionSource(const CoercionSource&) = delete;
    CoercionSource& operator=(const CoercionSource&) = delete;

    DescType type() const { return type_; }
    const void* data() const { return data_; }
    Size size() const { return size_; }
    /// Sets `desc` to a descriptor that the source owns or borrows.
    OSErr asDesc(const AEDesc** desc);

  private:
    DescType type_;
    const void* data_;
    Size size_;
    const AEDesc* given_ = nullptr;
    AEDesc made_ = {typeNull, nullptr};
};

/// One coercion inside others on the same thread. Handlers that coerce what they were given to the
/// same type would go round until the stack ends, and so would lists of lists of lists.
class CoercionLevel {
  public:
    CoercionLevel();
    ~CoercionLevel();
    CoercionLevel(const CoercionLevel&) = delete;
    CoercionLevel& operator=(const CoercionLevel&) = delete;
    /// Nobody nests 32 deep in earnest. From the first time that this is so no more handlers are
    /// asked until the outermost coercion is done: each level might start anew with its next
    /// handler, and the work would double at every level.
    bool isTooDeep() const;
};

/// Asks the handlers that are installed for the pair, in their order, until one answers something
/// else than errAECoercionFail, which is the answer when there is none. No lock is held while a
/// handler runs. `result` is the null descriptor on failure.
OSErr coerceWithHandlers(CoercionSource& source, DescType toType, AEDesc* result);

}  // namespace osa
