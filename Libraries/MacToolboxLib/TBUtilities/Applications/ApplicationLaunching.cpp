// Launching applications and bringing them to the front.
#include <CoreServices/Aliases.h>
#include <CoreServices/LaunchServices.h>
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include "Libraries/MacToolboxLib/CAEDesc/CAEDesc.h"
#include "Libraries/MacToolboxLib/TBUtilities/Applications/Applications.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"

namespace {

/// An event that asks nothing of whom it is sent to.
class NoOperation {
  public:
    NoOperation() {
        const ProcessSerialNumber nobody = {0, kNoProcess};
        const CAEDesc target(&nobody);
        FailOSErr(AECreateAppleEvent('ascr', 'noop', &target.GetDesc(), kAutoGenerateReturnID,
                                     kAnyTransactionID, &mEvent));
    }
    NoOperation(const NoOperation&) = delete;
    NoOperation& operator=(const NoOperation&) = delete;
    ~NoOperation() { AEDisposeDesc(&mEvent); }

    const AppleEvent& Get() const { return mEvent; }

  private:
    AppleEvent mEvent{typeNull, nullptr};
};

template <typename Application>
void ActivateIfRunning(const Application& application) {
    ProcessSerialNumber psn;
    if (GetApplicationPSN(application, psn)) ActivateAnApplication(psn);
}

}  // namespace

void LaunchAnApplication(const FSRef& app, bool inFront, bool) {
    LSLaunchFSRefSpec spec{};
    spec.appRef = &app;
    spec.launchFlags = kLSLaunchDontAddToRecents;
    if (!inFront) spec.launchFlags |= kLSLaunchDontSwitch;
    FailOSErr(LSOpenFromRefSpec(&spec, nullptr));
}

void LaunchAnApplication(CFStringRef bundleID, bool inFront, bool unused) {
    LaunchAnApplication(FindApplication(bundleID).GetFSRef(), inFront, unused);
}

void LaunchAnApplication(const FSSpec* app, bool inFront, bool) {
    FSSpec program = app == nullptr ? FSSpec{} : *app;
    Boolean isFolder = false;
    Boolean wasAliased = false;
    FailOSErr(app == nullptr ? OSErr{paramErr}
                             : ResolveAliasFile(&program, true, &isFolder, &wasAliased));
    CAEDesc firstEvent;
    firstEvent.CoerceTo(&NoOperation().Get(), typeAppParameters);
    const Handle parameters = firstEvent.GetDesc().dataHandle;
    const SHandleState state(parameters);
    HLock(parameters);

    LaunchParamBlockRec launch{};
    launch.launchBlockID = extendedBlock;
    launch.launchEPBLength = extendedBlockLen;
    launch.launchControlFlags = launchContinue | launchNoFileFlags;
    if (!inFront) launch.launchControlFlags |= launchDontSwitch;
    launch.launchAppSpec = &program;
    launch.launchAppParameters = reinterpret_cast<AppParameters*>(*parameters);
    FailOSErr(LaunchApplication(&launch));
}

OSStatus ActivateThisApplication(bool) {
    const ProcessSerialNumber own = GetCurrentApplication();
    FailOSErr(WakeUpProcess(&own));
    const OSStatus status = SetFrontProcess(&own);
    if (status != kCannotSetFrontProcessErr) FailOSErr(status);
    return status;
}

void ActivateAnApplication(const ProcessSerialNumber& psn) {
    FailOSErr(SetFrontProcess(&psn));
}

void ActivateAnApplication(UInt32 signature) {
    ActivateIfRunning(signature);
}

void ActivateAnApplication(CFStringRef bundleID) {
    ActivateIfRunning(bundleID);
}

void ActivateAnApplication(const CFileSpec& application) {
    ActivateIfRunning(application);
}
