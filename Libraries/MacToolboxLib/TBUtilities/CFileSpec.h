// CFileSpec: a copyable value that names one existing file-system object, by its platform
// reference.
#pragma once

#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>
#include <CoreServices/Files.h>
#include <CoreServices/Finder.h>

#include <string>

#include "Libraries/MacToolboxLib/TBUtilities/SCoreFoundation.h"
#include "Libraries/MacToolboxLib/TCLString/TCLString.h"

/// Holds the reference and nothing else: every query goes to the file system afresh and, unless it
/// says otherwise, throws the status of the platform call behind it.
class CFileSpec {
  public:
    /// Names nothing: the zeroed reference.
    CFileSpec();
    explicit CFileSpec(const FSRef& ref) : mRef(ref) {}
    /// The object of a file URL; fnfErr when there is none. A null URL gives the zeroed value.
    explicit CFileSpec(CFURLRef url);

    const FSRef& GetFSRef() const { return mRef; }

    /// The child named `name` inside this folder, which must exist.
    CFileSpec Make(const TCLString& name) const;
    /// The same, the name in UTF-8.
    CFileSpec Make(const char* name) const;
    /// Whether Make(name) succeeds; never throws.
    bool Exists(const TCLString& name) const;
    /// Whether the reference names a live object; never throws.
    bool Exists() const;
    /// The containing folder.
    CFileSpec GetParent() const;

    /// False for whatever cannot be asked; never throws.
    bool IsFolder() const;
    /// The POSIX mode word.
    UInt16 GetPermissions() const;
    /// Replaces the mode word and keeps owner and group.
    void SetPermissions(UInt16 mode);
    FinderInfo GetFinderInfo() const;
    void SetFinderInfo(const FinderInfo& info);
    ExtendedFinderInfo GetFinderXInfo() const;
    void SetFinderXInfo(const ExtendedFinderInfo& info);
    FSVolumeRefNum GetVolume() const;
    UInt32 GetNodeID() const;
    UTCDateTime GetCreationDate() const;
    /// Of the content.
    UTCDateTime GetModificationDate() const;

    void GetName(HFSUniStr255& name) const;
    void GetName(TCLString& name) const;
    void GetName(SCoreFoundation<CFStringRef>& name) const;
    void GetName(SCoreFoundation<CFMutableStringRef>& name) const;
    /// The name as the Finder shows it.
    TCLString GetDisplayName() const;
    /// The POSIX path in UTF-8, at most 2999 bytes.
    std::string GetPath() const;
    /// Null when the object has no URL; not thrown.
    SCoreFoundation<CFURLRef> GetURL() const;
    /// Null when the object is no bundle; memFullErr when it has no URL.
    SCoreFoundation<CFBundleRef> GetBundle() const;
    /// Empty when there is none, or no bundle; never throws.
    TCLString GetBundleID() const;

    bool IsApplication() const;
    bool IsBundle() const;
    /// Whether the trash of the object's volume is one of its ancestors; false for the zeroed
    /// value. Only the volume of an object that is gone can throw.
    bool IsInTrash() const;
    /// Asserts "!IsFolder()".
    bool IsStationaryPad() const;

    /// By catalog node IDs alone, unsigned: objects of two volumes with the same ID are equivalent.
    /// Reads both from the catalog and throws what that gives.
    bool operator<(const CFileSpec& other) const;

  private:
    FSRef mRef;
};

/// Type and creator of a file from its Finder information, of a bundle from its package
/// information. A null output is skipped. fnfErr for a folder that is no bundle.
void GetFileTypeAndCreator(const FSRef* ref, OSType* type, OSType* creator);
