// FileVisitor walks the entries of a folder; ExtensionVisitor collects those of a name extension.
#pragma once

#include <map>

#include "Libraries/MacToolboxLib/TBUtilities/CFileSpec.h"

class FileVisitor {
  public:
    virtual ~FileVisitor() = default;

    /// Called with each entry; false ends the walk.
    virtual bool ProcessFile(const CFileSpec& theFile, bool isFolder) = 0;

    /// Calls ProcessFile with each entry of `folder`, in the file system's order, without going
    /// down into folders. An alias or a link is followed to its end, without asking anybody: the
    /// visitor sees its target. An entry that leads nowhere is left out, and a folder that cannot
    /// be read any further ends there. Throws the status of opening the folder and what ProcessFile
    /// throws; a failure to close the folder takes the place of that.
    void ScanFolder(const CFileSpec& folder);
};

class ExtensionVisitor : public FileVisitor {
  public:
    /// Collects folders or files whose name ends in `extension`, any case of ASCII letters, with
    /// something before it. The extension includes its dot if there is to be one. `files`, which
    /// stays the caller's and must not be null, gets them by the names that they have on disk; a
    /// name that it has already stays what it is.
    ExtensionVisitor(const TCLString& extension, bool wantFolders,
                     std::map<TCLString, CFileSpec>* files);

    /// Always true. Asserts "mExtension.length() > 0" and "theFile.Exists()"; an empty extension
    /// matches every name, a file that is gone or has no name in Mac text none.
    bool ProcessFile(const CFileSpec& theFile, bool isFolder) override;

  private:
    TCLString mExtension;  // in lower case
    bool mWantFolders;
    std::map<TCLString, CFileSpec>* mFiles;
};
