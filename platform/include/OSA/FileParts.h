// Where the parts of a file or folder are kept on this machine: for tools that explain it.
#pragma once

#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFString.h>
#include <CoreServices/Files.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Keys of the dictionary. Arrays of places, which are dictionaries, in the order in which they
/// count: the first that is not blank does.
#define kOSAFinderInfoPlaces CFSTR("FinderInfo")
#define kOSAResourceForkPlaces CFSTR("ResourceFork")
/// AppleDouble files and attributes that are about the object, whatever they hold of it.
#define kOSAAppleDoublePlaces CFSTR("AppleDouble")

/// Keys of a place. One of the first two is there.
#define kOSAPlacePath CFSTR("Path")            ///< string: the file that holds the part
#define kOSAPlaceAttribute CFSTR("Attribute")  ///< string: the object's extended attribute
#define kOSAPlaceIsBlank CFSTR("IsBlank")      ///< Boolean: an empty resource fork
#define kOSAPlaceForm CFSTR("Form")            ///< string: "bare", "AfpInfo" or "AppleDouble"

/// More keys of a place in AppleDouble form, each there when the file has it.
#define kOSAPlaceCreated CFSTR("Created")  ///< date; the next three too
#define kOSAPlaceModified CFSTR("Modified")
#define kOSAPlaceBackedUp CFSTR("BackedUp")
#define kOSAPlaceAccessed CFSTR("Accessed")
#define kOSAPlaceRealName CFSTR("RealName")      ///< string
#define kOSAPlaceComment CFSTR("Comment")        ///< string
#define kOSAPlaceAttributes CFSTR("Attributes")  ///< array of strings: names of what it carries

/// What is known of the object's places. `*parts` is the caller's to release, null on failure. An
/// AppleDouble file that is damaged is left out of its array, or told with what can be read.
OSA_PLATFORM_EXPORT OSStatus OSACopyFileParts(const FSRef* ref, CFDictionaryRef* parts);

#ifdef __cplusplus
}
#endif
