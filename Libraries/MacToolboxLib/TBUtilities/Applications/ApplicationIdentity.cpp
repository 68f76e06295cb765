// Which application runs here, and where others are on disk.
#include <CoreServices/LaunchServices.h>
#include <CoreServices/MacErrors.h>

#include "Libraries/MacToolboxLib/TBUtilities/Applications/Applications.h"
#include "Libraries/MacToolboxLib/TBUtilities/Assertions.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"

namespace {

constexpr char kUnit[] = "Libraries/MacToolboxLib/TBUtilities";

}  // namespace

TCLString GetApplicationName() {
    TB_ASSERT(kUnit, CFBundleGetMainBundle() != NULL);
    const CFBundleRef bundle = CFBundleGetMainBundle();
    CFTypeRef cfAppName = CFBundleGetValueForInfoDictionaryKey(bundle, kCFBundleExecutableKey);
    if (cfAppName == nullptr) {
        cfAppName = CFBundleGetValueForInfoDictionaryKey(bundle, kCFBundleNameKey);
    }
    TB_ASSERT(kUnit, cfAppName && CFGetTypeID(cfAppName) == CFStringGetTypeID());
    if (cfAppName == nullptr || CFGetTypeID(cfAppName) != CFStringGetTypeID()) return gEmptyString;
    return ToTCLString(static_cast<CFStringRef>(cfAppName));
}

TCLString GetApplicationBundleID() {
    const CFStringRef bundleID = CFBundleGetIdentifier(CFBundleGetMainBundle());
    return bundleID == nullptr ? gEmptyString : ToTCLString(bundleID);
}

CFileSpec GetApplicationFileSpec() {
    return FileOfPSN({0, kCurrentProcess});
}

ProcessSerialNumber GetCurrentApplication() {
    ProcessSerialNumber psn;
    FailOSErr(GetCurrentProcess(&psn));
    return psn;
}

ProcessSerialNumber GetActiveApplication() {
    ProcessSerialNumber psn;
    FailOSErr(GetFrontProcess(&psn));
    return psn;
}

OSStatus FindApplicationNoThrow(CFStringRef bundleID, FSRef& application) {
    return LSFindApplicationForInfo(0, bundleID, nullptr, &application, nullptr);
}

CFileSpec FindApplication(CFStringRef bundleID) {
    FSRef application;
    FailOSErr(FindApplicationNoThrow(bundleID, application));
    return CFileSpec(application);
}

OSStatus FindApplicationNoThrow(UInt32 signature, FSRef& application) {
    ProcessSerialNumber psn;
    if (GetApplicationPSN(signature, psn)) return GetProcessBundleLocation(&psn, &application);
    return LSFindApplicationForInfo(signature, nullptr, nullptr, &application, nullptr);
}

CFileSpec FindApplication(UInt32 signature) {
    FSRef application;
    FailOSErr(FindApplicationNoThrow(signature, application));
    return CFileSpec(application);
}
