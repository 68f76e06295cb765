// Classification of script files.
#include "importer/ScriptType.h"

#include <array>
#include <cstdint>

#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/MacToolboxLib/TBUtilities/SCoreFoundation.h"
#include "fsextensions/FSExtensions.h"
#include "importer/ScriptFile.h"

namespace {

constexpr SInt16 kOldScriptID = 0;
constexpr SInt16 kScriptID = 128;
constexpr SInt16 kSettingsID = 0;
constexpr SInt32 kTrailerSize = 4;
constexpr std::array<std::uint8_t, kTrailerSize> kTrailer = {0xFA, 0xDE, 0xDE, 0xAD};

/// Closes the fork, if it was opened, when it goes.
class SOpenFork {
  public:
    explicit SOpenFork(const FSRef& ref) {
        HFSUniStr255 dataFork{};
        FailOSErr(FSOpenFork(&ref, dataFork.length, dataFork.unicode, fsRdPerm, &mRefNum));
    }
    SOpenFork(const SOpenFork&) = delete;
    SOpenFork& operator=(const SOpenFork&) = delete;
    ~SOpenFork() {
        if (mRefNum > 0) FSCloseFork(mRefNum);
    }
    SInt16 Get() const { return mRefNum; }

  private:
    SInt16 mRefNum = 0;
};

bool EndsInTrailer(const FSRef& ref) {
    const SOpenFork fork(ref);
    SInt32 length = 0;
    FailOSErr(GetEOF(fork.Get(), &length));
    if (length <= kTrailerSize) return false;
    FailOSErr(SetFPos(fork.Get(), fsFromStart, length - kTrailerSize));
    std::array<std::uint8_t, kTrailerSize> tail{};
    SInt32 count = kTrailerSize;
    FailOSErr(FSRead(fork.Get(), &count, tail.data()));
    return tail == kTrailer;
}

bool HoldsMainScript(const CFileSpec& spec) {
    const SCoreFoundation<CFBundleRef> bundle = spec.GetBundle();
    // Most scripts are files: an answer, where throwing it would cost as much as the rest of the
    // import.
    if (bundle == nullptr) return false;
    const SCoreFoundation<CFURLRef> resources(CFBundleCopyResourcesDirectoryURL(bundle));
    FailNIL(resources);
    const SCoreFoundation<CFURLRef> script(CFURLCreateWithFileSystemPathRelativeToBase(
        kCFAllocatorDefault, CFSTR("Scripts/main.scpt"), kCFURLPOSIXPathStyle, false, resources));
    FailNIL(script);
    return CFileSpec(script.Get()).Exists();
}

bool HoldsAppletSettings(const CFileSpec& spec) {
    CScriptResFile file(spec);
    file.Open(fsRdPerm);
    // The script is asked for and its answer dropped: an applet whose resources cannot be looked up
    // at all is no Carbon applet, whatever 'plst' would say.
    if (!file.ResourceExists('scpt', kOldScriptID)) {
        static_cast<void>(file.ResourceExists('scpt', kScriptID));
    }
    return file.ResourceExists('plst', kSettingsID) || file.ResourceExists('plst', kSettingsID);
}

template <typename Test>
SInt32 FalseOnFailure(Test test, const CFileSpec& spec) {
    try {
        return test(spec) ? 1 : 0;
    } catch (...) {
        return 0;
    }
}

ScriptType AppletType(const CFileSpec& spec) {
    OSType creator = 0;
    GetFileTypeAndCreator(&spec.GetFSRef(), nullptr, &creator);
    if (IsBundleApplet(spec)) return kScriptTypeBundleApplet;
    if (creator != 'aplt' && creator != 'dplt') return kScriptTypeUnknown;
    return IsCarbonApplet(spec) ? kScriptTypeCarbonApplet : kScriptTypeClassicApplet;
}

}  // namespace

ScriptType GetScriptType(const CFileSpec& spec) {
    OSType type = 0;
    GetFileTypeAndCreator(&spec.GetFSRef(), &type, nullptr);
    switch (type) {
        case 'asDF':
        case 'ssDF':
            return kScriptTypeExcluded;
        case 'TEXT':
        case 'sEXT':
            return kScriptTypeText;
        case 'osas':
        case 'ssas':
            if (IsBundleScript(spec)) return kScriptTypeBundleScript;
            return IsDataForkScript(spec) ? kScriptTypeDataForkScript : kScriptTypeResourceScript;
        case 'BNDL':
            return IsBundleScript(spec) ? kScriptTypeBundleScript : kScriptTypeUnknown;
        case 'APPL':
            return AppletType(spec);
        case 0:
            return IsDataForkScript(spec) ? kScriptTypeDataForkScript : kScriptTypeText;
        default:
            return kScriptTypeUnknown;
    }
}

SInt32 IsDataForkScript(const CFileSpec& spec) {
    return FalseOnFailure([](const CFileSpec& item) { return EndsInTrailer(item.GetFSRef()); },
                          spec);
}

SInt32 IsBundleScript(const CFileSpec& spec) {
    return FalseOnFailure(HoldsMainScript, spec);
}

SInt32 IsBundleApplet(const CFileSpec& spec) {
    return IsBundleScript(spec);
}

SInt32 IsCarbonApplet(const CFileSpec& spec) {
    return FalseOnFailure(HoldsAppletSettings, spec);
}
