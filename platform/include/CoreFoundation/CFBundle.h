// CFBundle: folders with a fixed layout of program, resources and information dictionary.
//
// Layouts: modern (Contents/Info.plist, Contents/Resources), old ("Support Files", or Resources
// beside the information) and flat (everything in the folder itself).
#pragma once

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct __CFBundle* CFBundleRef;
typedef SInt16 CFBundleRefNum;

OSA_PLATFORM_EXPORT CFTypeID CFBundleGetTypeID(void);

// Keys of the information dictionary.
OSA_PLATFORM_EXPORT extern const CFStringRef kCFBundleIdentifierKey;
OSA_PLATFORM_EXPORT extern const CFStringRef kCFBundleExecutableKey;
OSA_PLATFORM_EXPORT extern const CFStringRef kCFBundleNameKey;
OSA_PLATFORM_EXPORT extern const CFStringRef kCFBundleDevelopmentRegionKey;

/// The bundle at `url`; the caller releases it. Null when there is none: no folder, or a folder
/// that has neither "Contents" nor "Support Files", nor "Info.plist" or "PkgInfo" directly or in
/// "Resources", nor a known bundle extension (app, bundle, scptd, framework, plugin).
OSA_PLATFORM_EXPORT CFBundleRef CFBundleCreate(CFAllocatorRef allocator,
                                               CFURLRef url) CF_RETURNS_RETAINED;
/// The host's own bundle (a flat one only by its extension), or a made-up one around its program
/// file; borrowed.
OSA_PLATFORM_EXPORT CFBundleRef CFBundleGetMainBundle(void);
/// The folder itself; its URL ends in a slash.
OSA_PLATFORM_EXPORT CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle) CF_RETURNS_RETAINED;

/// Type and creator: "PkgInfo" when it holds 8 bytes or more, else the information dictionary, else
/// by the name ('APPL' for .app, 'FMWK' for .framework, 'BNDL') and '????'. Always fills both.
OSA_PLATFORM_EXPORT void CFBundleGetPackageInfo(CFBundleRef bundle, UInt32* packageType,
                                                UInt32* packageCreator);
/// Borrowed; empty when the bundle has no readable information property list.
OSA_PLATFORM_EXPORT CFDictionaryRef CFBundleGetInfoDictionary(CFBundleRef bundle);
/// Borrowed, null when missing. A value of the localised "InfoPlist.strings" goes before the plain
/// one.
OSA_PLATFORM_EXPORT CFTypeRef CFBundleGetValueForInfoDictionaryKey(CFBundleRef bundle,
                                                                   CFStringRef key);
OSA_PLATFORM_EXPORT CFStringRef CFBundleGetIdentifier(CFBundleRef bundle);

/// The folder for resources, whether or not it exists.
OSA_PLATFORM_EXPORT CFURLRef CFBundleCopyResourcesDirectoryURL(CFBundleRef bundle)
    CF_RETURNS_RETAINED;
/// An existing resource: in the resources folder (below `subDirectory`, may be null) first, then in
/// its localised folders, the user's languages before the development region's. Null when there is
/// none.
OSA_PLATFORM_EXPORT CFURLRef CFBundleCopyResourceURL(CFBundleRef bundle, CFStringRef name,
                                                     CFStringRef type,
                                                     CFStringRef subDirectory) CF_RETURNS_RETAINED;
/// The entry of a strings table ("Localizable" when `table` is null), else `value`, else `key`; a
/// new reference in every case, null only when `key` is.
OSA_PLATFORM_EXPORT CFStringRef CFBundleCopyLocalizedString(CFBundleRef bundle, CFStringRef key,
                                                            CFStringRef value,
                                                            CFStringRef table) CF_RETURNS_RETAINED;

/// The program file, null when the bundle names none that exists.
OSA_PLATFORM_EXPORT CFURLRef CFBundleCopyExecutableURL(CFBundleRef bundle) CF_RETURNS_RETAINED;
/// Loads the program file into the process, once.
OSA_PLATFORM_EXPORT Boolean CFBundleLoadExecutable(CFBundleRef bundle);
/// A function that the loaded program exports; null when there is none or it cannot be loaded.
OSA_PLATFORM_EXPORT void* CFBundleGetFunctionPointerForName(CFBundleRef bundle, CFStringRef name);

/// Opens the bundle's resource file (Resources/<executable>.rsrc, a map in its data fork or its
/// resource fork) and makes it current; -1 when there is none. ResError is 0 after success.
OSA_PLATFORM_EXPORT CFBundleRefNum CFBundleOpenBundleResourceMap(CFBundleRef bundle);
OSA_PLATFORM_EXPORT void CFBundleCloseBundleResourceMap(CFBundleRef bundle, CFBundleRefNum refNum);

#ifdef __cplusplus
}
#endif
