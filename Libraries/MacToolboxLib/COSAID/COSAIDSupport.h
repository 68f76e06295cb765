// What the parts of COSAID share: the unit's name in assertions, and open files that are closed
// with their scope.
#pragma once

#include <CoreServices/Resources.h>

#include <utility>

#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"

inline constexpr char kCOSAIDUnit[] = "Libraries/MacToolboxLib/COSAID";
/// Where a resource fork keeps the script.
inline constexpr SInt16 kScriptResourceID = 128;

/// Owns a resource file that was just opened.
class SOpenResFile {
  public:
    /// -1 throws ResError.
    explicit SOpenResFile(ResFileRefNum opened) : mRefNum(opened) {
        if (mRefNum == -1) FailResError();
    }
    SOpenResFile(const SOpenResFile&) = delete;
    SOpenResFile& operator=(const SOpenResFile&) = delete;
    ~SOpenResFile() {
        if (mRefNum != -1) CloseResFile(mRefNum);
    }
    ResFileRefNum RefNum() const { return mRefNum; }
    /// Writes the map.
    void Close() {
        CloseResFile(std::exchange(mRefNum, ResFileRefNum{-1}));
        FailResError();
    }

  private:
    ResFileRefNum mRefNum;
};
