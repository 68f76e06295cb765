// CFile: the base of the file objects. It names one file, which may or may not exist yet, and
// answers and does what needs no open file.
#pragma once

#include <CoreServices/Aliases.h>
#include <CoreServices/Files.h>
#include <CoreServices/Finder.h>

#include <string>

#include "Libraries/MacToolboxLib/CAEDesc/CAEDesc.h"
#include "Libraries/MacToolboxLib/TBUtilities/CFileSpec.h"
#include "Libraries/MacToolboxLib/TBUtilities/SCoreFoundation.h"
#include "Libraries/MacToolboxLib/TCLString/TCLString.h"

/// The identity is a descriptor: empty, 'fsrf' (an existing object) or 'furl' (a folder and a leaf
/// name, for a file that need not exist). Misuse is asserted, platform failures are thrown as
/// OSStatus.
///
/// The virtual operations stand in slot order, destructor first: derived classes and callers from
/// elsewhere depend on it.
class CFile {
  public:
    CFile();
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;
    virtual ~CFile();

    // --- Specifying. Each replaces the identity and makes it unresolved.

    /// The other's identity, as a 'furl' when `asURL`.
    virtual void Specify(const CFile* other, bool asURL);
    /// Alias resolution may interact afterwards, whatever the Boolean says.
    virtual void Specify(const CFileSpec& spec, bool interactive);
    /// An existing file by its POSIX path in UTF-8. Asserts "!isDirectory".
    virtual void Specify(const std::string& path, bool interactive);
    /// Asserts "theName".
    virtual void Specify(const CFileSpec& folder, CFStringRef theName, bool interactive);
    virtual void Specify(const CFileSpec& folder, const HFSUniStr255& name, bool interactive);
    virtual void Specify(const CFileSpec& folder, const TCLString& name, bool interactive);
    /// A copy of a descriptor of any type. Alias resolution may interact afterwards, whatever the
    /// Boolean says.
    virtual void Specify(const CAEDescReader& desc, bool interactive);
    /// In a folder of the Folder Manager, which is made when it is missing.
    virtual void SpecifyInKnownFolder(FSVolumeRefNum vRefNum, OSType folderType,
                                      const TCLString& name, bool interactive);
    virtual void SpecifyInKnownFolder(FSVolumeRefNum vRefNum, OSType folderType,
                                      const HFSUniStr255& name, bool interactive);
    virtual void SpecifyInKnownFolder(FSVolumeRefNum vRefNum, OSType folderType, CFStringRef name,
                                      bool interactive);
    /// In the temporary folder; an empty name becomes "Olk TempFile " and the tick count.
    virtual void SpecifyTempFile(FSVolumeRefNum vRefNum, const TCLString& name);
    virtual void SpecifyTempFile(FSVolumeRefNum vRefNum, const HFSUniStr255& name);
    virtual void SpecifyTempFile(FSVolumeRefNum vRefNum, CFStringRef name);

    /// Follows a Finder alias or symbolic link, once for an identity, and takes the target as
    /// identity. paramErr when that is a folder: the identity has moved to it then, but stays
    /// unresolved.
    virtual void ResolveFileAlias();
    virtual void ResolveFileAlias(bool interactive);

    /// Do nothing here; a plain CFile is never open.
    virtual void Open(SInt8 permission);
    virtual void Close();
    virtual bool IsOpen() const;

    /// True for any status but noErr: locked, or the check failed.
    virtual bool IsLocked() const;
    virtual bool IsStationaryPad() const;
    /// Never throws.
    virtual bool ExistsOnDisk() const;
    virtual bool IsFileInTrash() const;
    /// The leaf name, also of a file that does not exist.
    virtual void GetName(TCLString& name) const;
    virtual void GetName(SCoreFoundation<CFStringRef>& name) const;
    virtual void GetName(SCoreFoundation<CFMutableStringRef>& name) const;
    virtual void GetName(HFSUniStr255& name) const;
    virtual void GetMacFileInfo(FInfo& info) const;
    /// Writes the basic Finder information to where the file keeps it.
    virtual void SetMacFileInfo(FInfo& info) const;
    virtual CFileSpec GetFileSpec() const;
    virtual OSType GetFileType() const;
    virtual OSType GetCreator() const;
    virtual FSVolumeRefNum GetVolumeNumber() const;
    /// A new alias record; the caller disposes of it.
    virtual AliasHandle GetAlias() const;
    virtual void GetFileSpec(FSRef& ref) const;
    virtual void GetFileSpec(FSRef* ref) const;
    /// The containing folder and the leaf name, also of a file that does not exist.
    virtual void GetFileSpec(FSRef& parent, HFSUniStr255& name) const;
    virtual void GetFileSpec(FSRef* parent, HFSUniStr255* name) const;
    /// A copy of the identity, coerced to 'furl' when `asURL`.
    virtual void GetFileSpec(CAEDesc& out, bool asURL) const;
    virtual CFileSpec GetParent() const;
    /// 4 when the process may not write the file, else 0.
    virtual SInt32 GetAccessRights() const;
    virtual UInt16 GetPermissions() const;
    virtual void SetPermissions(UInt16 mode);
    virtual UTCDateTime GetModificationDate() const;
    virtual UTCDateTime GetCreationDate() const;

    // --- Changing the file.

    /// Makes the file, empty, under the folder and name it was specified by, which stay its
    /// identity. Asserts "mFileDesc.Is(typeFileURL)", "!ExistsOnDisk()", "!IsOpen()", "!mResolved".
    virtual void CreateNew(OSType creator, OSType fileType);
    /// Closes the file and deletes it at once, a folder with all that is in it. Links are not
    /// followed.
    virtual void ThrowOut();
    /// Renames the file, to a name in the system's encoding, and takes it under its new name as
    /// identity.
    virtual void ChangeName(unsigned char* pascalName);
    /// Change one Finder flag and keep the others.
    virtual void MakeInvisible();
    virtual void MakeVisible();

  protected:
    CAEDesc mFileDesc;
    bool mResolved;
    bool mInteractive;
};
