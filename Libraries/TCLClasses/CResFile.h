// CResFile: the file object for resources, wherever a file keeps them: in the resource fork, in a
// map in the data fork, or in the resource map of a bundle.
#pragma once

#include <CoreFoundation/CFBundle.h>
#include <CoreServices/Resources.h>

#include "Libraries/TCLClasses/CFile.h"

/// Every resource operation makes the file the thread's current resource file for its own duration
/// and puts the caller's back, also when it throws; it looks in this file alone. All of them assert
/// "IsOpen()". A missing resource is answered with null or false; any other error of the Resource
/// Manager is thrown.
class CResFile : public CFile {
  public:
    CResFile();
    ~CResFile() override;

    using CFile::CreateNew;

    /// Asserts "!IsOpen()" and "!mFileDesc.Empty()". Follows an alias where it can. fnfErr when the
    /// file has resources nowhere. A map in the data fork is opened read-only whatever `permission`
    /// asks.
    void Open(SInt8 permission) override;
    void Close() override;
    bool IsOpen() const override;
    /// Gives the file, which is made if it is not there, a resource fork without resources. Asserts
    /// "!IsOpen()", "!mFileDesc.Empty()" and "!mResolved". dupFNErr: it has one of some length.
    void CreateNew(OSType creator, OSType fileType) override;

    // Slots of this class, in their order.
    virtual void MakeCurrent();
    virtual bool IsBundleResourceFile() const;
    /// Also for a closed file, and for a bundle that has a resource map.
    virtual bool HasResFork();
    /// CreateNew for a map in the data fork, which Open then reads only.
    virtual void CreateNewDataFork(OSType creator, OSType fileType);

    // --- Writing; wrPermErr when the file is open for reading.

    /// Writes what was changed through the Resource Manager, and makes it last.
    virtual void Update();
    /// StoreResource with a copy of `size` bytes.
    virtual void StoreData(ResType type, SInt16 id, const char* data, Size size,
                           const unsigned char* name, SInt32 attributes);
    /// Writes a resource in place of the one with its type and id, protected or not, at the end of
    /// its type. An old one is removed from the file first: when the rest then fails, it is gone.
    /// `data`, the caller's own and no resource, stays the caller's also on failure (asserted to be
    /// there; addResFailed, and nothing changes, when it is not). `name` may be null; the low 8
    /// bits of `attributes` count.
    virtual void StoreResource(ResType type, SInt16 id, Handle data, const unsigned char* name,
                               SInt32 attributes);
    /// An id that no resource of the type has in this file.
    virtual SInt16 GetUniqueResourceID(ResType type);
    /// Removes the resource from the file, protected or not; nothing when it is missing.
    virtual void DeleteResource(ResType type, SInt16 id);

    // --- Reading.

    /// Without loading the data.
    virtual bool ResourceExists(ResType type, SInt16 id);
    virtual bool ResourceExists(ResType type, unsigned char* name);
    /// Copies a resource of exactly `size` bytes (asserted; never more than there are) into `data`.
    /// resNotFound when it is missing. Name, id and attributes are given where asked for.
    virtual void RetrieveData(ResType type, SInt16 id, char* data, Size size, unsigned char* name,
                              SInt32* attributes);
    virtual void RetrieveData(ResType type, unsigned char* name, char* data, Size size, SInt16* id,
                              SInt32* attributes);
    /// A handle that the caller owns and gives back with DisposeAHandle; null when missing.
    virtual Handle RetrieveResource(ResType type, SInt16 id, unsigned char* name,
                                    SInt16* attributes);
    virtual Handle RetrieveResource(ResType type, unsigned char* name, SInt16* id,
                                    SInt16* attributes);
    /// The Resource Manager's own handle, not loaded: it dies with the file, and a later
    /// ResourceExists for the same resource releases it.
    virtual Handle RetrieveEmptyResource(ResType type, SInt16 id);
    virtual Handle RetrieveEmptyResource(ResType type, unsigned char* name);

  protected:
    ResFileRefNum mRefNum;
    CFBundleRef mBundle;
};
