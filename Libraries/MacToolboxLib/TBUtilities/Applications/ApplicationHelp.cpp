// The application's help book.
#include <CoreServices/AppleHelp.h>
#include <CoreServices/MacErrors.h>

#include <atomic>

#include "Libraries/MacToolboxLib/TBUtilities/Applications/Applications.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/MacToolboxLib/TBUtilities/SCoreFoundation.h"

namespace {

/// Registers the book first; borrowed.
CFStringRef RegisteredBookName() {
    RegisterHelpBook();
    const CFTypeRef name = CFBundleGetValueForInfoDictionaryKey(CFBundleGetMainBundle(),
                                                                CFSTR("CFBundleHelpBookName"));
    if (name == nullptr || CFGetTypeID(name) != CFStringGetTypeID()) FailOSErr(fnfErr);
    return static_cast<CFStringRef>(name);
}

SCoreFoundation<CFStringRef> ToHolder(const TCLString& text) {
    return SCoreFoundation<CFStringRef>(ToCFString(text));
}

}  // namespace

void RegisterHelpBook() {
    static std::atomic<bool> sIsRegistered = false;
    if (sIsRegistered) return;
    const CFBundleRef bundle = CFBundleGetMainBundle();
    if (bundle == nullptr) FailOSErr(fnfErr);
    const SCoreFoundation<CFURLRef> url(CFBundleCopyBundleURL(bundle));
    FSRef ref;
    if (url.Get() == nullptr || !CFURLGetFSRef(url, &ref)) FailOSErr(fnfErr);
    FailOSErr(AHRegisterHelpBook(&ref));
    sIsRegistered = true;
}

void GotoHelpPage(const TCLString& path) {
    GotoHelpPage(path, gEmptyString);
}

void GotoHelpPage(const TCLString& path, const TCLString& anchor) {
    const CFStringRef book = RegisteredBookName();
    const auto pathText = ToHolder(path);
    const auto anchorText = anchor.empty() ? SCoreFoundation<CFStringRef>() : ToHolder(anchor);
    FailOSErr(AHGotoPage(book, pathText, anchorText));
}

void SearchHelpBook(const TCLString& query) {
    const CFStringRef book = RegisteredBookName();
    FailOSErr(AHSearch(book, ToHolder(query)));
}

void GotoHelpAnchor(const TCLString& anchor) {
    const CFStringRef book = RegisteredBookName();
    FailOSErr(AHLookupAnchor(book, ToHolder(anchor)));
}
