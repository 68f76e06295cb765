// What the parts of CResFile share: the unit's name in assertions, and the states that every
// operation puts back.
#pragma once

#include "Libraries/MacToolboxLib/TBUtilities/SCurrentResFile.h"

inline constexpr char kCResFileUnit[] = "Libraries/TCLClasses/CResFile";

/// Resource loading is off while it lives.
class SNoResLoad {
  public:
    SNoResLoad() { SetResLoad(false); }
    SNoResLoad(const SNoResLoad&) = delete;
    SNoResLoad& operator=(const SNoResLoad&) = delete;
    ~SNoResLoad() { SetResLoad(true); }
};
