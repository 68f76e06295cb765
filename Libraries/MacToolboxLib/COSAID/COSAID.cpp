// Owning numbers, and loading scripts.
#include "Libraries/MacToolboxLib/COSAID/COSAID.h"

#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>
#include <CoreServices/Resources.h>

#include <array>
#include <utility>

#include "Libraries/MacToolboxLib/COSAID/COSAIDSupport.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/MacToolboxLib/TBUtilities/SCurrentResFile.h"
#include "Libraries/MacToolboxLib/TBUtilities/SOpenFork.h"

namespace {

constexpr std::array<UInt8, 4> kTrailer = {0xFA, 0xDE, 0xDE, 0xAD};

SInt32 Length(const SOpenFork& fork) {
    SInt32 length = 0;
    FailOSErr(GetEOF(fork.RefNum(), &length));
    return length;
}

void Read(const SOpenFork& fork, SInt32 offset, SInt32 count, void* buffer) {
    FailOSErr(SetFPos(fork.RefNum(), fsFromStart, offset));
    FailOSErr(FSRead(fork.RefNum(), &count, buffer));
}

/// Borrowed.
Handle ScriptOf(const SOpenResFile& file) {
    UseResFile(file.RefNum());
    const Handle script = Get1Resource(typeOSAGenericStorage, kScriptResourceID);
    if (script == nullptr) {
        FailResError();
        FailOSErr(resNotFound);
    }
    return script;
}

}  // namespace

COSAID::~COSAID() {
    if (mID != kOSANullScript) OSADispose(mComponent, std::exchange(mID, OSAID{kOSANullScript}));
}

void COSAID::Free() {
    if (mID != kOSANullScript) OSADispose(mComponent, std::exchange(mID, OSAID{kOSANullScript}));
}

void COSAID::SetComponent(ComponentInstance component) {
    Free();
    mComponent = component;
}

void COSAID::SetOSAID(ComponentInstance component, OSAID id) {
    if (component == mComponent && id == mID) return;
    Free();
    COSAIDReader::SetOSAID(component, id);
}

void COSAID::Set(const AEDesc* value) {
    Free();
    FailOSErr(OSACoerceFromDesc(mComponent, value, kOSAModeNull, &mID));
}

void COSAID::Aquire(COSAID& other) {
    Free();
    COSAIDReader::SetOSAID(other.mComponent, other.mID);
    other.COSAIDReader::SetOSAID(nullptr, kOSANullScript);
}

void COSAID::Aquire(const COSAIDReader& other) {
    Free();
    mID = other.GetOSAID();
    mComponent = other.GetComponent();
}

void COSAID::Aquire(OSAID id) {
    Free();
    mID = id;
}

void COSAID::Copy(const COSAID& other) {
    Copy(other.mID);
}

void COSAID::Copy(OSAID id) {
    OSAID copy = kOSANullScript;
    if (id != kOSANullScript) FailOSErr(OSACopyID(mComponent, id, &copy));
    Free();
    mID = copy;
}

void COSAID::Load(const AEDesc* desc, SInt32 modeFlags) {
    Free();
    const DescType type = desc == nullptr ? DescType{typeNull} : desc->descriptorType;
    switch (type) {
        case typeFSRef:
        case typeAlias:
        case 'file':
        case typeFSS:
        case typeFileURL: {
            FSRef file;
            CAEDescReader(*desc).GetFileSpec(&file);
            Load(&file, modeFlags);
            return;
        }
        default:
            FailOSErr(OSALoad(mComponent, desc, modeFlags, &mID));
    }
}

void COSAID::Load(const FSRef* file, SInt32 modeFlags) {
    bool isDataFork = false;
    Load(file, isDataFork, modeFlags);
}

void COSAID::Load(const FSRef* file, bool& isDataFork, SInt32 modeFlags) {
    Free();
    try {
        LoadResource(file, modeFlags);
        isDataFork = false;
        return;
    } catch (OSStatus) {
        if (!IsDataForkScript(file)) throw;
    }
    LoadDataFork(file, modeFlags);
    isDataFork = true;
}

void COSAID::LoadResource(const FSRef* file, SInt32 modeFlags) {
    const SCurrentResFile saved;
    const SOpenResFile fork(FSOpenResFile(file, fsRdPerm));
    const Handle script = ScriptOf(fork);
    const CAEDesc desc(typeOSAGenericStorage, script);
    Load(&desc.GetDesc(), modeFlags);
    DisposeAHandle(script);
}

void COSAID::LoadDataFork(const FSRef* file, SInt32 modeFlags) {
    SOpenFork fork(file, fsRdPerm);
    const SInt32 length = Length(fork);
    const SHandle script(NewHandle(length));
    Read(fork, 0, length, script.Get() == nullptr ? nullptr : *script.Get());
    fork.Close();
    const CAEDesc desc(typeOSAGenericStorage, script.Get());
    Load(&desc.GetDesc(), modeFlags);
}

bool COSAID::IsDataForkScript(const FSRef* file) {
    try {
        const SOpenFork fork(file, fsRdPerm);
        const SInt32 length = Length(fork);
        const auto size = static_cast<SInt32>(kTrailer.size());
        if (length <= size) return false;
        std::array<UInt8, kTrailer.size()> end{};
        Read(fork, length - size, size, end.data());
        return end == kTrailer;
    } catch (OSStatus) {
        return false;
    }
}

void COSAID::LoadFile(const FSRef& file, bool& storable, SInt32 modeFlags) {
    Free();
    Boolean isStorable = 0;
    FailOSErr(OSALoadFile(mComponent, &file, &isStorable, modeFlags, &mID));
    storable = isStorable != 0;
}

void COSAID::LoadFile(const FSRef& file, SInt32 modeFlags) {
    bool storable = false;
    LoadFile(file, storable, modeFlags);
}

void COSAID::StoreFile(const FSRef& file, SInt32 modeFlags) {
    FailOSErr(OSAStoreFile(mComponent, mID, typeOSAGenericStorage, modeFlags, &file));
}
