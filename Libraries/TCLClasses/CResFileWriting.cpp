// CResFile: operations that change the file's resources.
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include "Libraries/MacToolboxLib/TBUtilities/Assertions.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/MacToolboxLib/TBUtilities/SHandle.h"
#include "Libraries/TCLClasses/CResFile.h"
#include "Libraries/TCLClasses/CResFileSupport.h"

namespace {

constexpr const char* kUnit = kCResFileUnit;

/// Takes the handle out of the current file, from which nothing is to be written for it.
void RemoveFromMap(Handle handle) {
    SetResAttrs(handle, 0);
    FailResError();
    RemoveResource(handle);
    FailResError();
}

void RemoveOld(ResFileRefNum refNum, ResType type, SInt16 id) {
    const SNoResLoad unloaded;
    const Handle old = Get1Resource(type, id);
    if (old == nullptr) return FailResErrorX();
    RemoveFromMap(old);
    DisposeHandle(old);
    UpdateResFile(refNum);
    FailResError();
}

/// Writes a handle that has just been added and gives it back to its owner.
void WriteAdded(Handle data, SInt32 attributes) {
    if (attributes != 0) {
        SetResAttrs(data, static_cast<ResAttributes>(attributes | resChanged));
        FailResError();
    }
    WriteResource(data);
    FailResError();
    DetachResource(data);
    FailResError();
}

}  // namespace

void CResFile::CreateNew(OSType creator, OSType fileType) {
    TB_ASSERT(kUnit, !IsOpen());
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    TB_ASSERT(kUnit, !mResolved);
    if (!ExistsOnDisk()) CFile::CreateNew(creator, fileType);
    FSRef parent;
    HFSUniStr255 name;
    GetFileSpec(parent, name);
    FSCreateResFile(&parent, name.length, name.unicode, kFSCatInfoNone, nullptr, nullptr, nullptr);
    FailResError();
}

void CResFile::CreateNewDataFork(OSType creator, OSType fileType) {
    TB_ASSERT(kUnit, !IsOpen());
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    TB_ASSERT(kUnit, !mResolved);
    if (!ExistsOnDisk()) CFile::CreateNew(creator, fileType);
    FSRef parent;
    HFSUniStr255 name;
    GetFileSpec(parent, name);
    FailOSErr(FSCreateResourceFile(&parent, name.length, name.unicode, kFSCatInfoNone, nullptr, 0,
                                   nullptr, nullptr, nullptr));
}

void CResFile::Update() {
    TB_ASSERT(kUnit, IsOpen());
    UpdateResFile(mRefNum);
    FailResError();
    FSFlushFork(mRefNum);
}

void CResFile::StoreData(ResType type, SInt16 id, const char* data, Size size,
                         const unsigned char* name, SInt32 attributes) {
    TB_ASSERT(kUnit, IsOpen());
    if (data == nullptr && size > 0) FailOSErr(paramErr);
    const SHandle copy(NewHandle(size));
    FailNIL(copy.Get());
    if (size > 0) BlockMoveData(data, *copy.Get(), size);
    StoreResource(type, id, copy.Get(), name, attributes);
}

void CResFile::StoreResource(ResType type, SInt16 id, Handle rData, const unsigned char* name,
                             SInt32 attributes) {
    TB_ASSERT(kUnit, IsOpen());
    TB_ASSERT(kUnit, rData);
    // What adding it would answer, before the old resource is gone.
    if (rData == nullptr) FailOSErr(addResFailed);
    const SCurrentResFile saved;
    MakeCurrent();
    RemoveOld(mRefNum, type, id);
    static constexpr unsigned char kNoName[] = {0};
    AddResource(rData, type, id, name == nullptr ? kNoName : name);
    FailResError();
    try {
        WriteAdded(rData, attributes);
    } catch (...) {
        // The handle is the caller's again, who disposes of it.
        SetResAttrs(rData, 0);
        RemoveResource(rData);
        throw;
    }
}

void CResFile::DeleteResource(ResType type, SInt16 id) {
    TB_ASSERT(kUnit, IsOpen());
    const SCurrentResFile saved;
    MakeCurrent();
    const SNoResLoad unloaded;
    const Handle handle = Get1Resource(type, id);
    if (handle == nullptr) return FailResErrorX();
    SetResAttrs(handle, static_cast<ResAttributes>(GetResAttrs(handle) & ~resProtected));
    RemoveResource(handle);
    FailResError();
    DisposeHandle(handle);
    Update();
}
