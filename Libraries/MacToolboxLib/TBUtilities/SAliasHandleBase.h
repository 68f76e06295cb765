// SAliasHandleBase: what every owner of an alias record can do with it, wherever it keeps the
// handle.
//
// An alias names a file or folder for good: it is found again after renaming and moving. Unless an
// operation says otherwise it throws the platform's status. Resolving looks for the object on disk
// and on the Mac may ask the user, so it belongs on the main thread there; ResolveFast never asks.
// `wasChanged`, which may be null, tells whether resolving has brought the record up to date.
#pragma once

#include <CoreServices/Aliases.h>

#include "Libraries/MacToolboxLib/TBUtilities/CFileSpec.h"
#include "Libraries/MacToolboxLib/TCLString/TCLString.h"

class SAliasHandleBase {
  public:
    virtual ~SAliasHandleBase() = default;

    // Storage, which the holder class has and whose handle it owns.

    /// Disposes of the handle, if there is one, and leaves the storage null.
    virtual void DisposeAliasHandle() = 0;
    virtual AliasHandle& GetAliasHandle() = 0;
    /// May be null.
    virtual AliasHandle GetAliasHandle() const = 0;

    // Each Make disposes of the old handle first, also when it then fails.

    void Make(const CFileSpec& target);
    /// Records also the way from `from` to the target.
    void Make(const CFileSpec& from, const CFileSpec& target);
    /// Takes bytes that were an alias elsewhere, whatever they are: null stays behind when there is
    /// no memory, and an empty handle for a size of 0.
    void Make(const void* data, Size size);

    /// Both assert "GetAliasHandle()".
    void Update(const CFileSpec& target);
    void Update(const CFileSpec& from, const CFileSpec& target);

    void Resolve(CFileSpec& target, bool* wasChanged) const;
    void Resolve(const CFileSpec& from, CFileSpec& target, bool* wasChanged) const;
    /// The NoThrow forms return the status. On failure neither result is written.
    OSStatus ResolveNoThrow(CFileSpec& target, bool* wasChanged) const;
    OSStatus ResolveNoThrow(const CFileSpec& from, CFileSpec& target, bool* wasChanged) const;
    /// Asks nobody, mounts nothing and leaves the record as it is; `wasChanged` tells whether it is
    /// out of date.
    void ResolveFast(CFileSpec& target, bool* wasChanged);
    OSStatus ResolveFastNoThrow(CFileSpec& target, bool* wasChanged);
    /// For a record out of an alias file; `logon` allows logging on to a server.
    void FollowFinderAlias(CFileSpec& target, bool logon, bool* wasChanged) const;
    OSStatus FollowFinderAliasNoThrow(CFileSpec& target, bool logon, bool* wasChanged) const;
    /// What the alias resolves to.
    CFileSpec GetFileSpec() const;

    /// The name in the record.
    TCLString GetAliasName() const;
    /// The name that the target has now.
    TCLString GetResolvedName() const;
    /// That, or the one in the record when the target cannot be found.
    TCLString GetName() const;

    /// Whether the alias resolves to this very object; never throws.
    bool operator==(const CFileSpec& spec) const;
    // Two aliases compare by their targets' node IDs when both resolve, here signed, volumes left
    // aside; else by the names in their records, unit by unit. Among resolvable and lost aliases
    // together that is no order to sort by. Only the names can throw.
    bool operator==(const SAliasHandleBase& other) const;
    bool operator<(const SAliasHandleBase& other) const;
};
