// ProcessInformationCopyDictionary: what is known of a process, by names.
#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFRef.h>
#include <CoreServices/MacErrors.h>
#include <CoreServices/Processes.h>

#include <new>

#include "platform/bundles/Bundle.h"
#include "platform/cf/StringObject.h"
#include "platform/services/processes/ProcessApplication.h"
#include "platform/services/processes/ProcessNumbers.h"

namespace osa {
namespace {

using Dictionary = CFRef<CFMutableDictionaryRef>;

template <typename Value>
void set(const Dictionary& dictionary, CFStringRef key, const CFRef<Value>& value) {
    if (value) CFDictionarySetValue(dictionary.get(), key, value.get());
}

void setText(const Dictionary& dictionary, CFStringRef key, const std::string& text) {
    if (!text.empty()) set(dictionary, key, CFRef<CFStringRef>::Adopt(createString(text)));
}

void setPath(const Dictionary& dictionary, CFStringRef key, const std::string& path) {
    const auto url = makeFileURL(path, false);
    if (!url) return;
    set(dictionary, key,
        CFRef<CFStringRef>::Adopt(CFURLCopyFileSystemPath(url.get(), kCFURLPOSIXPathStyle)));
}

void setCode(const Dictionary& dictionary, CFStringRef key, OSType code) {
    const std::string text = fourCCBytes(code);
    set(dictionary, key,
        CFRef<CFStringRef>::Adopt(createMacRomanString(std::as_bytes(std::span(text)))));
}

void describe(const Dictionary& dictionary, const Application& application) {
    if (!application.path.empty()) setPath(dictionary, CFSTR("BundlePath"), application.path);
    setCode(dictionary, CFSTR("FileType"), application.type);
    setCode(dictionary, CFSTR("FileCreator"), application.signature);
    CFDictionarySetValue(dictionary.get(), CFSTR("LSBackgroundOnly"),
                         application.isBackgroundOnly ? kCFBooleanTrue : kCFBooleanFalse);
    setText(dictionary, kCFBundleIdentifierKey, application.identifier);
    setText(dictionary, kCFBundleNameKey, application.name);
}

Result<Dictionary> copyDictionary(const ProcessSerialNumber& number) {
    OSA_TRY(const posix::ProcessFacts process, findProcess(number));
    const auto application = applicationOf(process);
    if (!application.ok() && application.status() != fnfErr) return Failure(application.status());
    auto dictionary = Dictionary::Adopt(CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    if (!dictionary) return Failure(memFullErr);
    describe(dictionary, application.ok() ? *application : Application());
    if (const auto program = posix::programOf(process.id); program.ok()) {
        setPath(dictionary, kCFBundleExecutableKey, *program);
    }
    const auto id = static_cast<SInt32>(process.id);
    set(dictionary, CFSTR("pid"),
        CFRef<CFNumberRef>::Adopt(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt32Type, &id)));
    OSA_CHECK(checkStillThere(process));
    return dictionary;
}

}  // namespace
}  // namespace osa

CFDictionaryRef ProcessInformationCopyDictionary(const ProcessSerialNumber* psn,
                                                 UInt32 /*infoToReturn*/) {
    if (psn == nullptr) return nullptr;
    try {
        auto dictionary = osa::copyDictionary(*psn);
        return dictionary.ok() ? dictionary->leak() : nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
