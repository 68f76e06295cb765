// CAEDescReader: a read-only view of one Apple event descriptor, which somebody else owns.
#pragma once

#include <CoreFoundation/CFURL.h>
#include <CoreServices/AEDataModel.h>
#include <CoreServices/Files.h>

class CAEDesc;

/// Never disposes of anything, and never changes when a getter fails. Failures are thrown as
/// OSStatus.
class CAEDescReader {
  public:
    CAEDescReader() : mDesc{typeNull, nullptr} {}
    /// A view of `desc`'s data, which must outlive the reader.
    explicit CAEDescReader(const AEDesc& desc) : mDesc(desc) {}

    /// The descriptor that is viewed, borrowed.
    const AEDesc& GetDesc() const { return mDesc; }
    DescType GetType() const { return mDesc.descriptorType; }
    bool Is(DescType type) const { return mDesc.descriptorType == type; }
    /// Whether the type is 'null' or there is no data.
    bool Empty() const { return Is(typeNull) || mDesc.dataHandle == nullptr; }

    /// Throws a non-zero status.
    void FailOSErr(OSStatus status) const;

    /// The reference of the object that the descriptor names: 'fsrf' read directly, any other type
    /// coerced to it (fnfErr for the URL of a missing object).
    void GetFileSpec(FSRef* ref) const;
    /// The containing folder's reference (for 'fsrf': the object's own) and the leaf name, which
    /// works for a URL of a missing object too. fnfErr when the parent is not there.
    void GetFileSpec(FSRef* ref, HFSUniStr255* name) const;
    /// The URL that the descriptor holds; the caller releases it.
    CFURLRef GetCFURL() const CF_RETURNS_RETAINED;

    /// A copy of the descriptor as `type`, in `out`.
    void CoerceTo(DescType type, CAEDesc& out) const;

  protected:
    AEDesc mDesc;
};
