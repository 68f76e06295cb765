// Storing scripts into descriptors and files.
#include <CoreServices/Finder.h>
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>
#include <CoreServices/Resources.h>

#include <cstring>

#include "Libraries/MacToolboxLib/COSAID/COSAID.h"
#include "Libraries/MacToolboxLib/COSAID/COSAIDSupport.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/MacToolboxLib/TBUtilities/SCurrentResFile.h"
#include "Libraries/MacToolboxLib/TBUtilities/SOpenFork.h"

namespace {

constexpr OSType kScriptFileType = 'osas';
constexpr ScriptCode kRoman = 0;
constexpr CFIndex kLongestName = 255;

/// What a URL's text names: a folder that exists, and the name of a file in it.
struct Place {
    FSRef parent;
    HFSUniStr255 name;

    Place(UInt16 length, const UniChar* text) {
        const SCoreFoundation<CFStringRef> string(
            CFStringCreateWithCharacters(kCFAllocatorDefault, text, length));
        FailNIL(string);
        const SCoreFoundation<CFURLRef> url(
            CFURLCreateWithString(kCFAllocatorDefault, string, nullptr));
        FailNIL(url);
        const SCoreFoundation<CFURLRef> folder(
            CFURLCreateCopyDeletingLastPathComponent(kCFAllocatorDefault, url));
        if (folder.Get() == nullptr) FailOSErr(fnfErr);
        const SCoreFoundation<CFStringRef> last(CFURLCopyLastPathComponent(url));
        FailNIL(last);
        if (!CFURLGetFSRef(folder, &parent)) FailOSErr(memFullErr);
        if (CFStringGetLength(last) > kLongestName) FailOSErr(errFSNameTooLong);
        FromCFString(last, name);
    }
};

FSCatalogInfo NewFileInfo(OSType creator) {
    FinderInfo finder{};
    finder.fdType = kScriptFileType;
    finder.fdCreator = creator;
    FSCatalogInfo info{};
    std::memcpy(&info.finderInfo, &finder, sizeof finder);
    return info;
}

OSErr MakeRef(const FSRef* parent, const HFSUniStr255* name, FSRef& file) {
    if (name == nullptr) FailOSErr(paramErr);
    return FSMakeFSRefUnicode(parent, NameLength(*name), name->unicode, 0, &file);
}

/// Opens a file's resource fork, which it makes first when there is none: the status of that shows
/// when it is opened again.
ResFileRefNum OpenResourceFork(const FSRef* parent, const HFSUniStr255* name, OSType creator) {
    FSRef file{};
    const ResFileRefNum opened =
        MakeRef(parent, name, file) == noErr ? FSOpenResFile(&file, fsRdWrPerm) : -1;
    if (opened != -1) return opened;
    const FSCatalogInfo info = NewFileInfo(creator);
    FSCreateResFile(parent, NameLength(*name), name->unicode, kFSCatInfoFinderInfo, &info, &file,
                    nullptr);
    return FSOpenResFile(&file, fsRdWrPerm);
}

ResFileRefNum OpenResourceFork(const FSSpec* spec, OSType creator) {
    const ResFileRefNum opened = FSpOpenResFile(spec, fsRdWrPerm);
    if (opened != -1) return opened;
    FSpCreateResFile(spec, creator, kScriptFileType, kRoman);
    return FSpOpenResFile(spec, fsRdWrPerm);
}

SInt16 OpenDataFork(const FSRef* parent, const HFSUniStr255* name, OSType creator) {
    FSRef file;
    SInt16 fork = 0;
    OSErr status = MakeRef(parent, name, file);
    if (status == noErr) status = FSOpenFork(&file, 0, nullptr, fsRdWrPerm, &fork);
    if (status == noErr) return fork;
    if (status != fnfErr) FailOSErr(status);
    const FSCatalogInfo info = NewFileInfo(creator);
    FailOSErr(FSCreateFileUnicode(parent, NameLength(*name), name->unicode, kFSCatInfoFinderInfo,
                                  &info, &file, nullptr));
    return SOpenFork(&file, fsRdWrPerm).Release();
}

SInt16 OpenDataFork(const FSSpec* spec, OSType creator) {
    SInt16 fork = 0;
    OSErr status = FSpOpenDF(spec, fsRdWrPerm, &fork);
    if (status == fnfErr) {
        FailOSErr(FSpCreate(spec, creator, kScriptFileType, kRoman));
        status = FSpOpenDF(spec, fsRdWrPerm, &fork);
    }
    FailOSErr(status);
    return fork;
}

/// Replaces all that the fork holds.
void WriteWhole(SInt16 fork, Handle data) {
    SInt32 count = static_cast<SInt32>(GetHandleSize(data));
    FailOSErr(SetEOF(fork, 0));
    HLock(data);
    FailOSErr(FSWrite(fork, &count, *data));
}

}  // namespace

void COSAIDReader::Store(AEDesc* result, bool withSource) const {
    const SInt32 mode = withSource ? kOSAModeNull : kOSAModePreventGetSource;
    FailOSErr(OSAStore(mComponent, mID, typeOSAGenericStorage, mode, result));
}

void COSAIDReader::Store(CAEDesc& result, bool withSource) const {
    Store(result.Receive(), withSource);
}

/// Takes the open file over.
void COSAIDReader::StoreResource(SInt16 opened, bool withSource) const {
    SOpenResFile file(opened);
    CAEDesc stored;
    Store(stored, withSource);
    UseResFile(file.RefNum());
    SHandle old(Get1Resource(typeOSAGenericStorage, kScriptResourceID));
    FailResErrorX();
    if (old.Get() != nullptr) {
        RemoveResource(old.Get());
        FailResError();
    }
    SHandle data(stored.CopyHandle());
    old.Set(nullptr);
    static constexpr unsigned char kNoName[1] = {0};
    AddResource(data.Get(), typeOSAGenericStorage, kScriptResourceID, kNoName);
    // The map owns it now and lets it go with the file. That it cannot be added is not told.
    if (ResError() == noErr) (void)data.Release();
    file.Close();
}

void COSAIDReader::Store(UInt16 length, const UniChar* url, OSType creator, bool withSource) const {
    const Place place(length, url);
    Store(&place.parent, &place.name, creator, withSource);
}

void COSAIDReader::Store(const FSRef* parent, const HFSUniStr255* name, OSType creator,
                         bool withSource) const {
    const SCurrentResFile saved;
    StoreResource(OpenResourceFork(parent, name, creator), withSource);
}

void COSAIDReader::Store(const FSSpec* spec, OSType creator, bool withSource) const {
    const SCurrentResFile saved;
    StoreResource(OpenResourceFork(spec, creator), withSource);
}

void COSAIDReader::Store(const FSRef* file, bool withSource) const {
    const SCurrentResFile saved;
    StoreResource(FSOpenResFile(file, fsRdWrPerm), withSource);
}

/// Takes the open fork over.
void COSAIDReader::StoreDataFork(SInt16 fork, bool withSource) const {
    SOpenFork file(fork);
    CAEDesc stored;
    Store(stored, withSource);
    const SHandle data(stored.CopyHandle());
    WriteWhole(fork, data.Get());
    file.Close();
}

void COSAIDReader::StoreDF(UInt16 length, const UniChar* url, OSType creator,
                           bool withSource) const {
    const Place place(length, url);
    StoreDF(&place.parent, &place.name, creator, withSource);
}

void COSAIDReader::StoreDF(const FSRef* parent, const HFSUniStr255* name, OSType creator,
                           bool withSource) const {
    StoreDataFork(OpenDataFork(parent, name, creator), withSource);
}

void COSAIDReader::StoreDF(const FSSpec* spec, OSType creator, bool withSource) const {
    StoreDataFork(OpenDataFork(spec, creator), withSource);
}

void COSAIDReader::StoreDF(const FSRef* file, bool withSource) const {
    StoreDataFork(SOpenFork(file, fsRdWrPerm).Release(), withSource);
}
