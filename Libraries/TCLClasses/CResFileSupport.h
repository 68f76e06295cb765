// What the parts of CResFile share: the unit's name in assertions, and the two states that every
// operation puts back.
#pragma once

#include <CoreServices/Resources.h>

inline constexpr char kCResFileUnit[] = "Libraries/TCLClasses/CResFile";

/// Remembers the current resource file and makes it current again when destroyed.
class SCurrentResFile {
  public:
    SCurrentResFile() : mSaved(CurResFile()) {}
    SCurrentResFile(const SCurrentResFile&) = delete;
    SCurrentResFile& operator=(const SCurrentResFile&) = delete;
    ~SCurrentResFile() { UseResFile(mSaved); }

  private:
    ResFileRefNum mSaved;
};

/// Resource loading is off while it lives.
class SNoResLoad {
  public:
    SNoResLoad() { SetResLoad(false); }
    SNoResLoad(const SNoResLoad&) = delete;
    SNoResLoad& operator=(const SNoResLoad&) = delete;
    ~SNoResLoad() { SetResLoad(true); }
};
