// The library's UTF-16 string and the conversions between it and the other forms of text: Pascal
// strings, byte runs in a named encoding, file-name records, Core Foundation strings, descriptors,
// codes, numbers.
//
// Encodings are the platform's 32-bit numbers (CFStringEncoding). A CFStringRef or
// CFMutableStringRef that a function returns is new and belongs to the caller. Failures are thrown
// as OSStatus.
#pragma once

#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFString.h>
#include <CoreServices/AEDataModel.h>
#include <CoreServices/MacTypes.h>

#include <string>

#include "Libraries/MacToolboxLib/TBUtilities/SHandle.h"

/// UTF-16 code units in host order; may hold any unit, 0 included.
using TCLString = std::basic_string<UniChar>;

/// The units that a file-name record really holds, whatever its count says.
inline UInt32 NameLength(const HFSUniStr255& name) {
    constexpr UInt32 room = sizeof name.unicode / sizeof name.unicode[0];
    return name.length < room ? name.length : room;
}

/// The empty string, for functions that return a string by reference and have none.
extern const TCLString gEmptyString;

// --- To Core Foundation strings. kTextMalformedInputErr when the platform makes none.

/// From a Pascal string in the system encoding. Asserts "s".
CFStringRef ToCFString(const unsigned char* s) CF_RETURNS_RETAINED;
/// From `count` units. Asserts "chars".
CFStringRef ToCFString(const UniChar* chars, UInt32 count) CF_RETURNS_RETAINED;
CFStringRef ToCFString(const HFSUniStr255& name) CF_RETURNS_RETAINED;
/// From bytes in exactly `encoding`; a byte-order mark is honoured and dropped when that is a
/// Unicode one. Asserts "bytes".
CFStringRef ToCFString(const char* bytes, UInt32 length, UInt32 encoding) CF_RETURNS_RETAINED;
CFStringRef ToCFString(const TCLString& string) CF_RETURNS_RETAINED;

/// The same as mutable strings without a limit of length. memFullErr when the copy of the units
/// form fails, kTextMalformedInputErr when that of another form does.
CFMutableStringRef ToCFMutableString(const UniChar* chars, UInt32 count) CF_RETURNS_RETAINED;
CFMutableStringRef ToCFMutableString(const char* bytes, UInt32 length,
                                     UInt32 encoding) CF_RETURNS_RETAINED;
CFMutableStringRef ToCFMutableString(const HFSUniStr255& name) CF_RETURNS_RETAINED;
CFMutableStringRef ToCFMutableString(const unsigned char* s) CF_RETURNS_RETAINED;

// --- From Core Foundation strings and data. A null string or data gives an empty result.

/// Into a Pascal string of at most 254 bytes; cfStringConversionErr when it does not fit or cannot
/// be encoded. Asserts "d" and that the string has at most 255 units.
void FromCFString(CFStringRef s, unsigned char* d, UInt32 encoding);
/// Cut silently at 255 units.
void FromCFString(CFStringRef s, HFSUniStr255& name);
/// Into bytes, without byte-order mark, up to the first character that `encoding` cannot hold;
/// cfStringConversionErr when that is the very first.
void FromCFString(CFStringRef s, std::string& out, UInt32 encoding);
/// Into units; `encoding` is not used. An object that is no string gives an empty result.
void FromCFString(CFStringRef s, TCLString& out, UInt32 encoding);
void FromCFData(CFDataRef data, std::string& out);
/// Cut silently at 255 units.
void FromTCLString(const TCLString& s, HFSUniStr255& name);

// --- To TCLString.

TCLString ToTCLString(CFStringRef s);
TCLString ToTCLString(const HFSUniStr255& name);
/// The units of a 'utxt' descriptor; an odd last byte is dropped. Asserts "desc" and its type;
/// throws the status of reading it.
TCLString ToTCLString(const AEDesc* desc);
/// From bytes in `encoding`. ASCII (0x0600) is widened byte by byte as signed numbers and is meant
/// for 7-bit text alone.
TCLString ToTCLString(const char* bytes, UInt32 length, UInt32 encoding);
/// From a zero-terminated run.
TCLString ToTCLString(const char* cstr, UInt32 encoding);
/// The code's four bytes as Mac Roman characters.
TCLString OSTypeToTCLString(OSType code);
/// Decimal, with "-" before negative numbers.
TCLString ToTCLString(SInt32 n);

/// Looks `key` up in the host's main bundle (the table "Localizable" when none is named); the key
/// itself when there is no entry.
TCLString TCLLocalizedString(CFStringRef key);
TCLString TCLLocalizedString(CFStringRef key, CFStringRef table);
TCLString TCLLocalizedString(const TCLString& key);
TCLString TCLLocalizedString(const TCLString& key, const TCLString& table);

// --- What encoding a run of bytes is in, by its first two or three bytes alone: a Unicode form by
// its mark or by a zero byte, else the system encoding.

UInt32 SniffTextEncoding(const unsigned char* bytes, UInt32 count);
UInt32 SniffTextEncoding(const SHandle& handle);
UInt32 SniffTextEncoding(const std::string& bytes);
/// The units' bytes in memory order: the answer depends on the host, as it should.
UInt32 SniffTextEncoding(const TCLString& units);
