// File URLs in Apple event descriptors of type 'furl', and the ways between them and the older
// descriptors of files.
//
// The data of such a descriptor is the URL as UTF-8 bytes, absolute, white space escaped, no
// terminator. Every function returns a status and never throws. A URL or descriptor handed back
// belongs to the caller; it is null (or the empty descriptor) whenever the status is not 0.
// Statuses that every function may answer besides its own:
//   paramErr    a null pointer where one is needed
//   memFullErr  no room
// ":" in a component of a URL's path is "/" in a Mac name and the reverse.
#pragma once

#include <CoreFoundation/CFURL.h>
#include <CoreServices/AEDataModel.h>
#include <CoreServices/Files.h>
#include <NavigationServices/Navigation.h>

extern "C" {

// Descriptors

/// A 'furl' descriptor of `url`.
OSStatus FURLCreateDescFromCFURL(CFURLRef url, AEDesc* desc);

/// Puts `url` into an event or record as the parameter `keyword`, of type 'furl'.
OSStatus FURLPutParamCFURL(AEDesc* event, AEKeyword keyword, CFURLRef url);

/// The URL that `desc` holds: 'furl' as bytes; 'TEXT', 'STXT', 'utf8', 'utxt' and 'itxt' as a URL
/// string, percent-escaped for a second try when it is none as it stands. cfStringConversionErr
/// when no URL results, as for every other type; the status of coercing the text.
OSStatus FURLCreateFromAEDesc(CFAllocatorRef allocator, const AEDesc* desc, CFURLRef* url);

/// The same for a parameter, coerced to 'furl' first, with the status of that.
OSStatus FURLCreateFromAppleEventParam(CFAllocatorRef allocator, const AEDesc* event,
                                       AEKeyword keyword, CFURLRef* url);

// URLs of what need not exist

/// The URL of the object `name` inside the folder `parent`. cfStringConversionErr when none
/// results.
OSStatus FURLCreateFromParentAndName(CFAllocatorRef allocator, const FSRef* parent,
                                     const HFSUniStr255* name, CFURLRef* url);

/// The URL of the file that a save dialog was told to write: its name in the folder that is the
/// first item of the selection. The status of reading that item, or cfStringConversionErr.
OSStatus FURLCreateFromNavReply(CFAllocatorRef allocator, const NavReplyRecord* reply,
                                CFURLRef* url);

/// The URL of an FSSpec, whose name may be a path below its folder, ended by ":" when it
/// names a folder. What comes before the last name must exist. Every failure is fnfErr.
OSStatus FURLCreateFromFSSpec(CFAllocatorRef allocator, const FSSpec* spec, CFURLRef* url);

// Making files. `newRef` may be null and is written on success only; `info` may be null when
// `whichInfo` is 0. fnfErr when the URL's folder does not exist, bdNamErr when it names none, else
// the status of the File Manager.

/// Makes the file that `url` names: FSCreateFileUnicode.
OSStatus FURLCreateFileWithCFURL(CFURLRef url, FSCatalogInfoBitmap whichInfo,
                                 const FSCatalogInfo* info, FSRef* newRef);

/// The same with a resource fork: FSCreateResFile, which also gives one to a file without.
OSStatus FURLCreateResFileWithCFURL(CFURLRef url, FSCatalogInfoBitmap whichInfo,
                                    const FSCatalogInfo* info, FSRef* newRef);

// Coercion handlers

/// To 'furl', whatever `toType` says: text as a URL string; 'fss ', whose object need not exist;
/// 'fsrf' and 'alis', whose object must (fnfErr and the like); 'obj ' of the class 'file', 'furl'
/// or 'alis' by its key, others by what the manager makes of them. errAECoercionFail for every
/// other type, and for object specifiers inside of object specifiers.
OSErr FURLCoerceDescToFURL(const AEDesc* desc, DescType toType, SInt32 refcon, AEDesc* result);

/// From the data of a 'furl' to 'TEXT', 'STXT' and 'utxt' (the URL itself, no path), 'obj ' (class
/// 'furl', by name), 'fsrf', 'fss ' and 'file' (both give a descriptor of type 'fss '), 'alis'.
/// What does not exist has no 'fsrf' (fnfErr); 'fss ' and 'alis' take its path "Volume:folder:leaf"
/// then: dirNFErr when its folder does not exist either ('fss '), pathTooLongErr for a path of 256
/// bytes and more or outside the system encoding. cfStringConversionErr: the data is no URL;
/// errAECoercionFail: another type.
OSErr FURLCoerceFURLPtrToDesc(DescType fromType, const void* data, Size size, DescType toType,
                              SInt32 refcon, AEDesc* result);

/// Installs both in the application's table: 'TEXT', 'STXT', 'utxt', 'fss ', 'fsrf' and 'alis' to
/// 'furl', and 'furl' to all the types above. Not for 'obj ' to 'furl'. Runs by itself when the
/// library is loaded, and is undone when it is unloaded. With several copies in one process the
/// last one loaded has the handlers; calling it again takes them back.
OSStatus FURLInstallCoercionHandlers(void);
}
