// The Process Manager's view of the calling process, told from its main bundle.
#include <CoreServices/Processes.h>

#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFRef.h>
#include <CoreServices/MacErrors.h>

#include "platform/cf/StringObject.h"
#include "platform/posix/FileSystem.h"

namespace osa {
namespace {

// Keeps the numbers of real processes apart from those that only stand for one.
constexpr UInt32 kHighWordOfProcesses = 1;

ProcessSerialNumber ownNumber() {
    return {kHighWordOfProcesses, posix::processID()};
}

bool isSame(const ProcessSerialNumber& first, const ProcessSerialNumber& second) {
    return first.highLongOfPSN == second.highLongOfPSN && first.lowLongOfPSN == second.lowLongOfPSN;
}

bool isOwn(const ProcessSerialNumber& number) {
    return isSame(number, {0, kCurrentProcess}) || isSame(number, ownNumber());
}

/// The bundle that the program lies in; none for a plain program file.
CFRef<CFURLRef> ownBundleURL() {
    const auto url = CFRef<CFURLRef>::Adopt(CFBundleCopyBundleURL(CFBundleGetMainBundle()));
    if (!url) return {};
    // The main bundle is made up around a program that has none.
    const auto real = CFRef<CFBundleRef>::Adopt(CFBundleCreate(kCFAllocatorDefault, url.get()));
    return real ? url : CFRef<CFURLRef>();
}

CFRef<CFURLRef> ownLocation() {
    CFRef<CFURLRef> url = ownBundleURL();
    if (url) return url;
    return CFRef<CFURLRef>::Adopt(CFBundleCopyExecutableURL(CFBundleGetMainBundle()));
}

bool isBackgroundOnly() {
    const CFTypeRef value =
        CFBundleGetValueForInfoDictionaryKey(CFBundleGetMainBundle(), CFSTR("LSBackgroundOnly"));
    return value != nullptr && CFGetTypeID(value) == CFBooleanGetTypeID() &&
           CFBooleanGetValue(static_cast<CFBooleanRef>(value)) != 0;
}

/// The four characters of a code, for dictionaries.
CFRef<CFStringRef> codeAsString(OSType code) {
    const UInt8 bytes[] = {static_cast<UInt8>(code >> 24), static_cast<UInt8>(code >> 16),
                           static_cast<UInt8>(code >> 8), static_cast<UInt8>(code)};
    return CFRef<CFStringRef>::Adopt(CFStringCreateWithBytes(
        kCFAllocatorDefault, bytes, sizeof bytes, kCFStringEncodingMacRoman, false));
}

void setValue(CFMutableDictionaryRef dictionary, CFStringRef key, CFTypeRef value) {
    if (value != nullptr) CFDictionarySetValue(dictionary, key, value);
}

void describeProgram(CFMutableDictionaryRef dictionary) {
    UInt32 type = 0;
    UInt32 creator = 0;
    CFBundleGetPackageInfo(CFBundleGetMainBundle(), &type, &creator);
    setValue(dictionary, CFSTR("FileType"), codeAsString(type).get());
    setValue(dictionary, CFSTR("FileCreator"), codeAsString(creator).get());
    const auto id = static_cast<SInt32>(posix::processID());
    setValue(
        dictionary, CFSTR("pid"),
        CFRef<CFNumberRef>::Adopt(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt32Type, &id))
            .get());
    if (const CFRef<CFURLRef> location = ownLocation()) {
        setValue(
            dictionary, CFSTR("BundlePath"),
            CFRef<CFStringRef>::Adopt(CFURLCopyFileSystemPath(location.get(), kCFURLPOSIXPathStyle))
                .get());
    }
    for (const CFStringRef key :
         {kCFBundleIdentifierKey, kCFBundleNameKey, kCFBundleExecutableKey}) {
        setValue(dictionary, key,
                 CFBundleGetValueForInfoDictionaryKey(CFBundleGetMainBundle(), key));
    }
}

}  // namespace
}  // namespace osa

OSErr GetCurrentProcess(ProcessSerialNumber* psn) {
    if (psn == nullptr) return paramErr;
    *psn = osa::ownNumber();
    return noErr;
}

OSErr GetNextProcess(ProcessSerialNumber* psn) {
    if (psn == nullptr) return paramErr;
    const bool isStart = osa::isSame(*psn, {0, kNoProcess});
    *psn = isStart ? osa::ownNumber() : ProcessSerialNumber{0, kNoProcess};
    return isStart ? noErr : procNotFound;
}

OSErr SameProcess(const ProcessSerialNumber* first, const ProcessSerialNumber* second,
                  Boolean* result) {
    if (first == nullptr || second == nullptr || result == nullptr) return paramErr;
    *result = osa::isSame(*first, *second) || (osa::isOwn(*first) && osa::isOwn(*second)) ? 1 : 0;
    return noErr;
}

OSErr GetProcessInformation(const ProcessSerialNumber* psn, ProcessInfoRec* info) {
    if (psn == nullptr || info == nullptr || info->processInfoLength != sizeof *info ||
        info->processName != 0 || info->processAppSpec != 0)
        return paramErr;
    if (!osa::isOwn(*psn)) return procNotFound;
    *info = {};
    info->processInfoLength = sizeof *info;
    info->processNumber = osa::ownNumber();
    UInt32 type = 0;
    UInt32 signature = 0;
    CFBundleGetPackageInfo(CFBundleGetMainBundle(), &type, &signature);
    info->processType = type;
    info->processSignature = signature;
    if (osa::isBackgroundOnly()) info->processMode = modeOnlyBackground;
    return noErr;
}

OSStatus GetProcessBundleLocation(const ProcessSerialNumber* psn, FSRef* location) {
    if (psn == nullptr || location == nullptr) return paramErr;
    if (!osa::isOwn(*psn)) return procNotFound;
    const CFRef<CFURLRef> url = osa::ownLocation();
    return url && CFURLGetFSRef(url.get(), location) ? noErr : fnfErr;
}

CFDictionaryRef ProcessInformationCopyDictionary(const ProcessSerialNumber* psn,
                                                 UInt32 /*infoToReturn*/) {
    if (psn == nullptr || !osa::isOwn(*psn)) return nullptr;
    const CFMutableDictionaryRef dictionary = CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    if (dictionary != nullptr) osa::describeProgram(dictionary);
    return dictionary;
}
