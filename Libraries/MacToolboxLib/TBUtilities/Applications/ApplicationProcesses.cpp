// Questions to the running processes.
#include <CoreServices/MacErrors.h>

#include "Libraries/MacToolboxLib/TBUtilities/Applications/Applications.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/MacToolboxLib/TBUtilities/SCoreFoundation.h"

namespace {

OSErr ReadInformation(const ProcessSerialNumber& psn, ProcessInfoRec& info) {
    info = {};
    info.processInfoLength = sizeof info;
    return GetProcessInformation(&psn, &info);
}

/// The first process that meets the test.
template <typename Test>
bool FindProcess(ProcessSerialNumber& psn, Test isWanted) {
    ProcessSerialNumber candidate = {0, kNoProcess};
    while (GetNextProcess(&candidate) == noErr) {
        if (!isWanted(candidate)) continue;
        psn = candidate;
        return true;
    }
    return false;
}

}  // namespace

CFileSpec FileOfPSN(const ProcessSerialNumber& psn) {
    FSRef location;
    FailOSErr(GetProcessBundleLocation(&psn, &location));
    return CFileSpec(location);
}

OSType SignatureOfPSN(const ProcessSerialNumber& psn) {
    ProcessInfoRec info;
    return ReadInformation(psn, info) == noErr ? info.processSignature : 'null';
}

bool IsFBA(const ProcessSerialNumber& psn) {
    ProcessInfoRec info;
    return ReadInformation(psn, info) == noErr && (info.processMode & modeOnlyBackground) != 0;
}

bool GetApplicationPSN(UInt32 signature, ProcessSerialNumber& psn) {
    return FindProcess(psn, [&](const ProcessSerialNumber& candidate) {
        ProcessInfoRec info;
        return ReadInformation(candidate, info) == noErr && info.processSignature == signature;
    });
}

bool GetApplicationPSN(CFStringRef bundleID, ProcessSerialNumber& psn) {
    if (bundleID == nullptr) return false;
    return FindProcess(psn, [&](const ProcessSerialNumber& candidate) {
        const SCoreFoundation<CFDictionaryRef> information(ProcessInformationCopyDictionary(
            &candidate, kProcessDictionaryIncludeAllInformationMask));
        if (information.Get() == nullptr) return false;
        const CFTypeRef value = CFDictionaryGetValue(information, kCFBundleIdentifierKey);
        return value != nullptr && CFGetTypeID(value) == CFStringGetTypeID() &&
               CFStringCompare(static_cast<CFStringRef>(value), bundleID, 0) == kCFCompareEqualTo;
    });
}

bool GetApplicationPSN(const CFileSpec& application, ProcessSerialNumber& psn) {
    return FindProcess(psn, [&](const ProcessSerialNumber& candidate) {
        FSRef location;
        return GetProcessBundleLocation(&candidate, &location) == noErr &&
               FSCompareFSRefs(&location, &application.GetFSRef()) == noErr;
    });
}

bool IsApplicationRunning(UInt32 signature) {
    ProcessSerialNumber psn;
    return GetApplicationPSN(signature, psn);
}

bool IsApplicationRunning(const CFileSpec& application) {
    ProcessSerialNumber psn;
    return GetApplicationPSN(application, psn);
}

bool IsApplicationRunning(const ProcessSerialNumber& psn) {
    ProcessInfoRec info;
    return ReadInformation(psn, info) == noErr;
}
