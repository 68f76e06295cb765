// SCurrentResFile: what every operation on resources puts back.
#pragma once

#include <CoreServices/Resources.h>

/// Remembers the current resource file and makes it current again when destroyed, unless it was
/// closed meanwhile.
class SCurrentResFile {
  public:
    SCurrentResFile() : mSaved(CurResFile()) {}
    SCurrentResFile(const SCurrentResFile&) = delete;
    SCurrentResFile& operator=(const SCurrentResFile&) = delete;
    ~SCurrentResFile() { UseResFile(mSaved); }

  private:
    ResFileRefNum mSaved;
};
