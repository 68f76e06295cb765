// The resource file of a script, set up the way the importer opens all of them.
#pragma once

#include "Libraries/MacToolboxLib/TBUtilities/CFileSpec.h"
#include "Libraries/TCLClasses/CResFile.h"

/// A CResFile that takes a reference as its identity, aliases unresolved and interaction allowed.
class CScriptResFile : public CResFile {
  public:
    explicit CScriptResFile(const CFileSpec& spec) {
        mFileDesc.Set(typeFSRef, reinterpret_cast<const char*>(&spec.GetFSRef()), sizeof(FSRef));
        mResolved = false;
        mInteractive = true;
    }
};
