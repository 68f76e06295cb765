// CAEDesc: the owning Apple event descriptor.
#pragma once

#include <CoreFoundation/CFString.h>

#include "Libraries/MacToolboxLib/CAEDesc/CAEDescReader.h"

/// Disposes of its data once, in the destructor or before it is replaced. Operations that replace
/// the content empty the object first: a failure then leaves it empty. Failures are thrown as
/// OSStatus.
class CAEDesc : public CAEDescReader {
  public:
    /// Slots: the destructor, then Free.
    virtual ~CAEDesc();
    /// Disposes of the data and leaves 'null'. Without data nothing happens and the type stays.
    virtual void Free();

    CAEDesc() = default;
    CAEDesc(const CAEDesc& other) : CAEDescReader() { Copy(&other.mDesc); }
    explicit CAEDesc(const CAEDescReader& other) { Copy(&other.GetDesc()); }
    CAEDesc& operator=(const CAEDesc& other);
    CAEDesc& operator=(const CAEDescReader& other);

    /// `size` bytes of `data` as `type`.
    void Set(DescType type, const char* data, Size size);
    /// A 'furl' descriptor of the URL.
    void SetCFURL(CFURLRef url);
    /// A 'furl' descriptor of the object; memFullErr when it has no URL.
    void SetCFURL(const FSRef* ref);
    /// A 'furl' descriptor of the child `name` of `parent`, which need not exist.
    void SetCFURL(const FSRef* parent, const HFSUniStr255* name);
    /// A duplicate of `source`; the object's own descriptor is left as it is.
    void Copy(const AEDesc* source);
    /// Takes over the other's content and leaves the other empty. Its own old content is gone
    /// first, so an object cannot acquire itself.
    void Aquire(CAEDesc& other);
    /// Coerces in place; on failure the old content stays.
    void CoerceTo(DescType type);
    /// `source` as `type`.
    void CoerceTo(const AEDesc* source, DescType type);
    using CAEDescReader::CoerceTo;
};
