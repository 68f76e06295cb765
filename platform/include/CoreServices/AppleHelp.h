// Apple Help: an application's own help book, a folder of pages inside its bundle.
//
// Pages are shown by whatever the desktop opens HTML with. The answer is given once its opener has
// started: what becomes of the page is not known. Statuses of every call that shows one:
//   kAHInternalErr  no such book is registered, or it has no such page
//   kAHConfigErr    the desktop has no opener (xdg-open), or it may not be started
//   paramErr        a null argument where one is needed
#pragma once

#include <CoreFoundation/CFString.h>
#include <CoreServices/Files.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Makes the help book of the bundle at `appBundleRef` known to the process: "CFBundleHelpBookName"
/// of its information dictionary is the book's name, "CFBundleHelpBookFolder" its folder among the
/// resources, localised or not. Registering again replaces it. Of a book its first 10,000 pages of
/// up to 4 MiB are looked at, and 64 MiB of these. kAHInternalErr: no bundle, no names, or no such
/// folder inside the bundle, wherever links lead.
OSA_PLATFORM_EXPORT OSStatus AHRegisterHelpBook(const FSRef* appBundleRef);
/// Shows `path`, relative to the book's folder, which it cannot leave, or the book's title page
/// when it is null or empty, at `anchor` (may be null). Without book, `path` is a full URL of
/// scheme file, http or https.
OSA_PLATFORM_EXPORT OSStatus AHGotoPage(CFStringRef bookname, CFStringRef path, CFStringRef anchor);
/// Shows a list, made in the user's caches folder, of the book's pages that hold every word of
/// `query`, any case; of all registered books when `bookname` is null. kAHInternalErr when there is
/// none.
OSA_PLATFORM_EXPORT OSStatus AHSearch(CFStringRef bookname, CFStringRef query);
/// Shows the page of the book (of any registered one when `bookname` is null) that has the anchor.
OSA_PLATFORM_EXPORT OSStatus AHLookupAnchor(CFStringRef bookname, CFStringRef anchor);

#ifdef __cplusplus
}
#endif
