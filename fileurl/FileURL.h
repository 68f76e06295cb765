// File URLs in Apple event descriptors of type 'furl'.
//
// The data of such a descriptor is the URL as UTF-8 bytes, absolute, white space escaped, no
// terminator. Every function returns a status and never throws. A URL or descriptor handed back
// belongs to the caller; it is null (or the empty descriptor) whenever the status is not 0.
#pragma once

#include <CoreFoundation/CFURL.h>
#include <CoreServices/AEDataModel.h>
#include <CoreServices/Files.h>

extern "C" {

/// A 'furl' descriptor of `url`.
OSStatus FURLCreateDescFromCFURL(CFURLRef url, AEDesc* desc);

/// The URL that `desc` holds: 'furl' as bytes, text types as a URL string, percent-escaped for a
/// second try when it is none as it stands. cfStringConversionErr when no URL results.
OSStatus FURLCreateFromAEDesc(CFAllocatorRef allocator, const AEDesc* desc, CFURLRef* url);

/// The URL of the object `name` inside the folder `parent`, whether or not it exists.
/// cfStringConversionErr when none results.
OSStatus FURLCreateFromParentAndName(CFAllocatorRef allocator, const FSRef* parent,
                                     const HFSUniStr255* name, CFURLRef* url);
}
