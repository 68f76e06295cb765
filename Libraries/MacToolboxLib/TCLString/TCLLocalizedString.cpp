// Strings of the host's localisation tables.
#include <CoreFoundation/CFBundle.h>

#include "Libraries/MacToolboxLib/TBUtilities/SCoreFoundation.h"
#include "Libraries/MacToolboxLib/TCLString/TCLString.h"

TCLString TCLLocalizedString(CFStringRef key) {
    return TCLLocalizedString(key, nullptr);
}

TCLString TCLLocalizedString(CFStringRef key, CFStringRef table) {
    const SCoreFoundation<CFStringRef> found(
        CFBundleCopyLocalizedString(CFBundleGetMainBundle(), key, key, table));
    return ToTCLString(found.Get());
}

TCLString TCLLocalizedString(const TCLString& key) {
    const SCoreFoundation<CFStringRef> keyString(ToCFString(key));
    return TCLLocalizedString(keyString.Get());
}

TCLString TCLLocalizedString(const TCLString& key, const TCLString& table) {
    const SCoreFoundation<CFStringRef> keyString(ToCFString(key));
    const SCoreFoundation<CFStringRef> tableString(ToCFString(table));
    return TCLLocalizedString(keyString.Get(), tableString.Get());
}
