// CResFile: looking resources up and handing them out.
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <algorithm>

#include "Libraries/MacToolboxLib/TBUtilities/Assertions.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/TCLClasses/CResFile.h"
#include "Libraries/TCLClasses/CResFileSupport.h"

namespace {

constexpr const char* kUnit = kCResFileUnit;

// A resource by id or by name: what differs between the two forms of every operation.

Handle Lookup(ResType type, SInt16 id) {
    return Get1Resource(type, id);
}

Handle Lookup(ResType type, unsigned char* name) {
    return Get1NamedResource(type, name);
}

template <typename Key>
Handle LookupUnloaded(ResType type, Key key) {
    const SNoResLoad unloaded;
    const Handle handle = Lookup(type, key);
    if (handle == nullptr) FailResErrorX();  // switching loading on clears the error
    return handle;
}

template <typename Key>
bool Exists(CResFile& file, ResType type, Key key) {
    TB_ASSERT(kUnit, file.IsOpen());
    const SCurrentResFile saved;
    file.MakeCurrent();
    const SNoResLoad unloaded;
    const Handle handle = Lookup(type, key);
    if (handle == nullptr) {
        FailResErrorX();
        return false;
    }
    ReleaseResource(handle);
    return true;
}

template <typename Key>
Handle RetrieveEmpty(CResFile& file, ResType type, Key key) {
    TB_ASSERT(kUnit, file.IsOpen());
    const SCurrentResFile saved;
    file.MakeCurrent();
    return LookupUnloaded(type, key);
}

/// What a caller may want to know of a resource besides its data; null pointers are not wanted.
template <typename Attributes>
struct Wanted {
    unsigned char* name;
    SInt16* id;
    Attributes* attributes;
};

template <typename Attributes>
void Describe(Handle handle, const Wanted<Attributes>& wanted) {
    if (wanted.attributes != nullptr) *wanted.attributes = GetResAttrs(handle);
    if (wanted.name == nullptr && wanted.id == nullptr) return;
    SInt16 id = 0;
    ResType type = 0;
    Str255 name;
    GetResInfo(handle, &id, &type, name);
    if (wanted.id != nullptr) *wanted.id = id;
    if (wanted.name != nullptr) std::copy_n(name, name[0] + 1, wanted.name);
}

template <typename Key>
Handle Retrieve(CResFile& file, ResType type, Key key, const Wanted<SInt16>& wanted) {
    TB_ASSERT(kUnit, file.IsOpen());
    const SCurrentResFile saved;
    file.MakeCurrent();
    const Handle handle = Lookup(type, key);
    if (handle == nullptr) {
        FailResErrorX();
        return nullptr;
    }
    Describe(handle, wanted);
    DetachResource(handle);
    return handle;
}

template <typename Key>
void RetrieveInto(CResFile& file, ResType type, Key key, char* rData, Size rDataSize,
                  const Wanted<SInt32>& wanted) {
    TB_ASSERT(kUnit, file.IsOpen());
    TB_ASSERT(kUnit, rData);
    if (rData == nullptr) FailOSErr(paramErr);
    const SCurrentResFile saved;
    file.MakeCurrent();
    const Handle h = Lookup(type, key);
    if (h == nullptr) {
        FailResError();
        FailOSErr(resNotFound);
    }
    Describe(h, wanted);
    TB_ASSERT(kUnit, GetHandleSize(h) == rDataSize);
    const Size copied = std::min(rDataSize, GetHandleSize(h));
    if (copied > 0) BlockMoveData(*h, rData, copied);
    ReleaseResource(h);
}

}  // namespace

SInt16 CResFile::GetUniqueResourceID(ResType type) {
    TB_ASSERT(kUnit, IsOpen());
    const SCurrentResFile saved;
    MakeCurrent();
    return Unique1ID(type);
}

bool CResFile::ResourceExists(ResType type, SInt16 id) {
    return Exists(*this, type, id);
}

bool CResFile::ResourceExists(ResType type, unsigned char* name) {
    return Exists(*this, type, name);
}

void CResFile::RetrieveData(ResType type, SInt16 id, char* data, Size size, unsigned char* name,
                            SInt32* attributes) {
    RetrieveInto(*this, type, id, data, size, {name, nullptr, attributes});
}

void CResFile::RetrieveData(ResType type, unsigned char* name, char* data, Size size, SInt16* id,
                            SInt32* attributes) {
    RetrieveInto(*this, type, name, data, size, {nullptr, id, attributes});
}

Handle CResFile::RetrieveResource(ResType type, SInt16 id, unsigned char* name,
                                  SInt16* attributes) {
    return Retrieve(*this, type, id, {name, nullptr, attributes});
}

Handle CResFile::RetrieveResource(ResType type, unsigned char* name, SInt16* id,
                                  SInt16* attributes) {
    return Retrieve(*this, type, name, {nullptr, id, attributes});
}

Handle CResFile::RetrieveEmptyResource(ResType type, SInt16 id) {
    return RetrieveEmpty(*this, type, id);
}

Handle CResFile::RetrieveEmptyResource(ResType type, unsigned char* name) {
    return RetrieveEmpty(*this, type, name);
}
