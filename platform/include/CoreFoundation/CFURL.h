// CFURL: URLs, absolute or relative to a base, and the file paths they stand for.
//
// A URL's text is ASCII with everything else percent-escaped; file paths in it are escaped byte by
// byte, so that any Unix path survives. Functions that answer a URL or string give null for a null
// argument and for what they cannot express.
#pragma once

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFString.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef const struct __CFURL* CFURLRef;
struct FSRef;

/// How a file path is written. POSIX: components behind "/". HFS: the volume's name, then
/// components behind ":"; a "/" inside a name there is a ":" inside a POSIX name and the other way
/// round.
typedef CFIndex CFURLPathStyle;
enum { kCFURLPOSIXPathStyle = 0, kCFURLHFSPathStyle = 1, kCFURLWindowsPathStyle = 2 };

OSA_PLATFORM_EXPORT CFTypeID CFURLGetTypeID(void);

/// From a URL's text. Null when it is empty, or holds a character that a URL may not (blanks,
/// controls, non-ASCII, double quote, < > [ ] { } \ ^ ` |) or a "%" without two hex digits behind
/// it. Without a scheme the URL is relative to `base`, which may be null.
OSA_PLATFORM_EXPORT CFURLRef CFURLCreateWithString(CFAllocatorRef allocator, CFStringRef string,
                                                   CFURLRef base) CF_RETURNS_RETAINED;
/// From a URL's text as bytes. Bytes that a URL may not hold are escaped as they are instead of
/// being refused; the encoding must be one that contains ASCII.
OSA_PLATFORM_EXPORT CFURLRef CFURLCreateWithBytes(CFAllocatorRef allocator, const UInt8* bytes,
                                                  CFIndex length, CFStringEncoding encoding,
                                                  CFURLRef base) CF_RETURNS_RETAINED;
/// From a file path, which is resolved against the current folder when it is relative.
/// `isDirectory` adds a trailing "/" when there is none; without it a trailing "/" is dropped. Only
/// POSIX and HFS styles.
OSA_PLATFORM_EXPORT CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef allocator,
                                                           CFStringRef path, CFURLPathStyle style,
                                                           Boolean isDirectory) CF_RETURNS_RETAINED;
/// The same, relative to `base`. The base counts as a folder, so that the path names something
/// inside it, when its URL ends in "/" or when it is an existing folder on disk; else its last
/// component is replaced. Null `base`: the current folder.
OSA_PLATFORM_EXPORT CFURLRef CFURLCreateWithFileSystemPathRelativeToBase(
    CFAllocatorRef allocator, CFStringRef path, CFURLPathStyle style, Boolean isDirectory,
    CFURLRef base) CF_RETURNS_RETAINED;
/// From the bytes of a POSIX path, which need not be UTF-8.
OSA_PLATFORM_EXPORT CFURLRef
CFURLCreateFromFileSystemRepresentation(CFAllocatorRef allocator, const UInt8* path, CFIndex length,
                                        Boolean isDirectory) CF_RETURNS_RETAINED;
/// The URL of an object; a folder's ends in "/". Null when the reference names nothing.
OSA_PLATFORM_EXPORT CFURLRef
CFURLCreateFromFSRef(CFAllocatorRef allocator, const struct FSRef* reference) CF_RETURNS_RETAINED;
/// Whether the URL names an existing object, to which `reference` then refers. Links are followed.
/// A trailing "/" demands a folder.
OSA_PLATFORM_EXPORT Boolean CFURLGetFSRef(CFURLRef url, struct FSRef* reference);

/// The URL's own text, borrowed: not resolved against the base.
OSA_PLATFORM_EXPORT CFStringRef CFURLGetString(CFURLRef url);
/// The base, borrowed; null when there is none.
OSA_PLATFORM_EXPORT CFURLRef CFURLGetBaseURL(CFURLRef url);
/// Resolved against the base, "." and ".." removed; the same object when there is no base.
OSA_PLATFORM_EXPORT CFURLRef CFURLCopyAbsoluteURL(CFURLRef url) CF_RETURNS_RETAINED;
/// The absolute URL's text in the encoding, without terminator. `escapeWhitespace` changes nothing,
/// since blanks are escaped in every URL.
OSA_PLATFORM_EXPORT CFDataRef CFURLCreateData(CFAllocatorRef allocator, CFURLRef url,
                                              CFStringEncoding encoding,
                                              Boolean escapeWhitespace) CF_RETURNS_RETAINED;

// Parts of the URL's own text, still escaped; null when it has no such part.
OSA_PLATFORM_EXPORT CFStringRef CFURLCopyScheme(CFURLRef url) CF_RETURNS_RETAINED;
OSA_PLATFORM_EXPORT CFStringRef CFURLCopyNetLocation(CFURLRef url) CF_RETURNS_RETAINED;
OSA_PLATFORM_EXPORT CFStringRef CFURLCopyHostName(CFURLRef url) CF_RETURNS_RETAINED;
OSA_PLATFORM_EXPORT CFStringRef CFURLCopyPath(CFURLRef url) CF_RETURNS_RETAINED;
/// What follows the path, from "?" or "#" on.
OSA_PLATFORM_EXPORT CFStringRef CFURLCopyResourceSpecifier(CFURLRef url) CF_RETURNS_RETAINED;
/// False for URLs such as "mailto:", which have no path of components.
OSA_PLATFORM_EXPORT Boolean CFURLCanBeDecomposed(CFURLRef url);

/// Whether the path ends in "/", "." or ".."; the disk is not asked.
OSA_PLATFORM_EXPORT Boolean CFURLHasDirectoryPath(CFURLRef url);
/// The URL's path, not resolved against the base, in the given style and without a trailing
/// separator. Null when its bytes are no UTF-8, for the Windows style, and for a URL whose scheme
/// is not "file".
OSA_PLATFORM_EXPORT CFStringRef CFURLCopyFileSystemPath(CFURLRef url,
                                                        CFURLPathStyle style) CF_RETURNS_RETAINED;
/// The POSIX path's bytes with a terminating zero. False when they do not fit, when the URL is no
/// file URL of this machine, or when an escape in it stands for "/" or zero.
OSA_PLATFORM_EXPORT Boolean CFURLGetFileSystemRepresentation(CFURLRef url,
                                                             Boolean resolveAgainstBase,
                                                             UInt8* buffer, CFIndex bufferSize);

// Path components. Names are not escaped where they are given or answered as strings.
/// "/" for the root; null when it is no UTF-8.
OSA_PLATFORM_EXPORT CFStringRef CFURLCopyLastPathComponent(CFURLRef url) CF_RETURNS_RETAINED;
/// What follows the last "." in the last component; null when nothing does.
OSA_PLATFORM_EXPORT CFStringRef CFURLCopyPathExtension(CFURLRef url) CF_RETURNS_RETAINED;
OSA_PLATFORM_EXPORT CFURLRef
CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef url, CFStringRef component,
                                      Boolean isDirectory) CF_RETURNS_RETAINED;
/// Ends in "/". Null for the root and for an empty path.
OSA_PLATFORM_EXPORT CFURLRef CFURLCreateCopyDeletingLastPathComponent(
    CFAllocatorRef allocator, CFURLRef url) CF_RETURNS_RETAINED;
OSA_PLATFORM_EXPORT CFURLRef CFURLCreateCopyAppendingPathExtension(
    CFAllocatorRef allocator, CFURLRef url, CFStringRef extension) CF_RETURNS_RETAINED;
OSA_PLATFORM_EXPORT CFURLRef CFURLCreateCopyDeletingPathExtension(CFAllocatorRef allocator,
                                                                  CFURLRef url) CF_RETURNS_RETAINED;

/// Escapes what a URL may not hold, "%" and "#" included, as bytes of the encoding; also the
/// characters of `legalToEscape`, but none of `leaveUnescaped` (both may be null). Null when a
/// character has no bytes in the encoding.
OSA_PLATFORM_EXPORT CFStringRef CFURLCreateStringByAddingPercentEscapes(
    CFAllocatorRef allocator, CFStringRef string, CFStringRef leaveUnescaped,
    CFStringRef legalToEscape, CFStringEncoding encoding) CF_RETURNS_RETAINED;
/// Replaces escapes by the characters they stand for in UTF-8, except those of `leaveEscaped`. Null
/// `leaveEscaped`: nothing is replaced. Null when an escape is malformed or the bytes are no UTF-8.
OSA_PLATFORM_EXPORT CFStringRef CFURLCreateStringByReplacingPercentEscapes(
    CFAllocatorRef allocator, CFStringRef string, CFStringRef leaveEscaped) CF_RETURNS_RETAINED;

#ifdef __cplusplus
}
#endif
