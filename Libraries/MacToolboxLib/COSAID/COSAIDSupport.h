// What the parts of COSAID share: the unit's name in assertions, and a descriptor that goes with
// its scope.
#pragma once

#include <CoreServices/AEDataModel.h>

inline constexpr char kCOSAIDUnit[] = "Libraries/MacToolboxLib/COSAID";
/// Where a resource fork keeps the script.
inline constexpr SInt16 kScriptResourceID = 128;

/// Owns a descriptor that a platform call fills.
class SOwnedDesc {
  public:
    SOwnedDesc() { AEInitializeDesc(&mDesc); }
    SOwnedDesc(const SOwnedDesc&) = delete;
    SOwnedDesc& operator=(const SOwnedDesc&) = delete;
    ~SOwnedDesc() { AEDisposeDesc(&mDesc); }

    AEDesc* Out() { return &mDesc; }
    const AEDesc& Get() const { return mDesc; }

  private:
    AEDesc mDesc;
};
