// CFString: runs of UTF-16 units, immutable or mutable, and their conversion to bytes.
//
// Lengths, indexes and ranges count UTF-16 units; any unit value is allowed, 0 and unpaired
// surrogates included. Ranges must lie inside the string. Create and Copy functions answer null
// when memory fails, and when their input is null.
#pragma once

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDictionary.h>

#include <stdarg.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Number of a character encoding.
typedef UInt32 CFStringEncoding;

// clang-format off
#define kCFStringEncodingInvalidId (0xFFFFFFFFu)
enum {
    kCFStringEncodingMacRoman       = 0,            ///< decodes every byte
    kCFStringEncodingUnicode        = 0x0100,       ///< UTF-16 in host order
    kCFStringEncodingUTF16          = 0x0100,
    kCFStringEncodingISOLatin1      = 0x0201,
    kCFStringEncodingWindowsLatin1  = 0x0500,
    kCFStringEncodingASCII          = 0x0600,
    kCFStringEncodingNextStepLatin  = 0x0B01,
    kCFStringEncodingUTF8           = 0x08000100,
    kCFStringEncodingUTF32          = 0x0C000100,
    kCFStringEncodingUTF16BE        = 0x10000100,
    kCFStringEncodingUTF16LE        = 0x14000100,
    kCFStringEncodingUTF32BE        = 0x18000100,
    kCFStringEncodingUTF32LE        = 0x1C000100
};

/// Options of comparison and search; bits that are not listed are ignored.
typedef CFOptionFlags CFStringCompareFlags;
enum {
    kCFCompareCaseInsensitive       = 1,            ///< simple case folding of each character
    kCFCompareBackwards             = 4,            ///< search from the end
    kCFCompareAnchored              = 8,            ///< find only at the start (or end, backwards)
    kCFCompareNumerically           = 64            ///< runs of digits compare as numbers
};
// clang-format on

OSA_PLATFORM_EXPORT CFTypeID CFStringGetTypeID(void);

/// The constant string of an ASCII or UTF-8 literal: never released, one object for equal texts.
OSA_PLATFORM_EXPORT CFStringRef OSAConstantString(const char* text);
#ifdef __cplusplus
#define CFSTR(literal)                                                        \
    ([]() -> CFStringRef {                                                    \
        static const CFStringRef constant = OSAConstantString("" literal ""); \
        return constant;                                                      \
    }())
#else
#define CFSTR(literal) OSAConstantString("" literal "")
#endif

/// From `length` bytes. With `isExternalRepresentation` a byte-order mark at the start is honoured
/// and dropped for the Unicode encodings; without a mark kCFStringEncodingUTF16 is host order. Null
/// when the bytes are malformed in the encoding or the encoding is unknown; no bytes give an empty
/// string.
OSA_PLATFORM_EXPORT CFStringRef CFStringCreateWithBytes(
    CFAllocatorRef allocator, const UInt8* bytes, CFIndex length, CFStringEncoding encoding,
    Boolean isExternalRepresentation) CF_RETURNS_RETAINED;
OSA_PLATFORM_EXPORT CFStringRef CFStringCreateWithCharacters(CFAllocatorRef allocator,
                                                             const UniChar* characters,
                                                             CFIndex length) CF_RETURNS_RETAINED;
/// From a zero-terminated string; null when malformed.
OSA_PLATFORM_EXPORT CFStringRef CFStringCreateWithCString(
    CFAllocatorRef allocator, const char* string, CFStringEncoding encoding) CF_RETURNS_RETAINED;
/// From a length byte and that many bytes; null when malformed.
OSA_PLATFORM_EXPORT CFStringRef
CFStringCreateWithPascalString(CFAllocatorRef allocator, const unsigned char* string,
                               CFStringEncoding encoding) CF_RETURNS_RETAINED;
OSA_PLATFORM_EXPORT CFStringRef CFStringCreateWithSubstring(CFAllocatorRef allocator,
                                                            CFStringRef string,
                                                            CFRange range) CF_RETURNS_RETAINED;
/// An immutable string of the same units; the same object when it is immutable already.
OSA_PLATFORM_EXPORT CFStringRef CFStringCreateCopy(CFAllocatorRef allocator,
                                                   CFStringRef string) CF_RETURNS_RETAINED;

/// printf's language with %@ for any object (its text when it is a string, else its description),
/// %C for a UniChar and %S for zero-terminated UniChars; %s is in the system encoding. `options` is
/// not used. %n, positions and vectors are not supported: they stand as they are.
OSA_PLATFORM_EXPORT CFStringRef CFStringCreateWithFormat(CFAllocatorRef allocator,
                                                         CFDictionaryRef options,
                                                         CFStringRef format,
                                                         ...) CF_RETURNS_RETAINED;
OSA_PLATFORM_EXPORT CFStringRef
CFStringCreateWithFormatAndArguments(CFAllocatorRef allocator, CFDictionaryRef options,
                                     CFStringRef format, va_list arguments) CF_RETURNS_RETAINED;
/// The strings of `array`, one after the other with `separator` between.
OSA_PLATFORM_EXPORT CFStringRef CFStringCreateByCombiningStrings(
    CFAllocatorRef allocator, CFArrayRef array, CFStringRef separator) CF_RETURNS_RETAINED;
/// The parts between the separators: one more than there are separators, parts may be empty.
OSA_PLATFORM_EXPORT CFArrayRef CFStringCreateArrayBySeparatingStrings(
    CFAllocatorRef allocator, CFStringRef string, CFStringRef separator) CF_RETURNS_RETAINED;

OSA_PLATFORM_EXPORT CFIndex CFStringGetLength(CFStringRef string);
/// The unit at `index`; 0 outside the string.
OSA_PLATFORM_EXPORT UniChar CFStringGetCharacterAtIndex(CFStringRef string, CFIndex index);
/// Copies the units of `range` to `buffer`.
OSA_PLATFORM_EXPORT void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar* buffer);
/// The units themselves, borrowed while the string lives unchanged, or null: strings made from
/// 8-bit text are kept so and have none.
OSA_PLATFORM_EXPORT const UniChar* CFStringGetCharactersPtr(CFStringRef string);
/// The bytes themselves, zero-terminated, when the string is kept in exactly this encoding; else
/// null.
OSA_PLATFORM_EXPORT const char* CFStringGetCStringPtr(CFStringRef string,
                                                      CFStringEncoding encoding);

/// Converts `range` into `buffer` and answers how many units were converted. A character that the
/// encoding cannot hold becomes `lossByte`, or ends the conversion when that is 0; so does the end
/// of the buffer, before a character that does not fit whole. `usedBytes` (may be null) receives
/// the bytes made. A null `buffer` only counts. A byte-order mark is written for UTF-16 and UTF-32
/// in host order when `isExternalRepresentation` is true.
OSA_PLATFORM_EXPORT CFIndex CFStringGetBytes(CFStringRef string, CFRange range,
                                             CFStringEncoding encoding, UInt8 lossByte,
                                             Boolean isExternalRepresentation, UInt8* buffer,
                                             CFIndex bufferSize, CFIndex* usedBytes);
/// Upper bound of the bytes that `length` units need; kCFNotFound for an unknown encoding.
OSA_PLATFORM_EXPORT CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length,
                                                              CFStringEncoding encoding);
/// Whether the whole string fits into `buffer` with its length byte; else the length byte is set to
/// 0.
OSA_PLATFORM_EXPORT Boolean CFStringGetPascalString(CFStringRef string, unsigned char* buffer,
                                                    CFIndex bufferSize, CFStringEncoding encoding);
/// Whether the whole string fits into `buffer` with a terminating zero; else `buffer` is empty.
OSA_PLATFORM_EXPORT Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize,
                                               CFStringEncoding encoding);
/// A data object in the encoding with a byte-order mark for the host-order forms; null when a
/// character cannot be converted and `lossByte` is 0.
OSA_PLATFORM_EXPORT CFDataRef
CFStringCreateExternalRepresentation(CFAllocatorRef allocator, CFStringRef string,
                                     CFStringEncoding encoding, UInt8 lossByte) CF_RETURNS_RETAINED;
/// The number that the text begins with after blanks, 0 when it begins with none; clamped to 32
/// bits.
OSA_PLATFORM_EXPORT SInt32 CFStringGetIntValue(CFStringRef string);

/// The encoding of text that names none: Mac Roman, unless the host chose another one.
OSA_PLATFORM_EXPORT CFStringEncoding CFStringGetSystemEncoding(void);
/// Chooses the system encoding, once in a process and best before anything else is called. False,
/// without effect, on later calls and for encodings that are unknown or not made of bytes.
OSA_PLATFORM_EXPORT Boolean OSASetSystemEncoding(CFStringEncoding encoding);
OSA_PLATFORM_EXPORT Boolean CFStringIsEncodingAvailable(CFStringEncoding encoding);
/// kCFStringEncodingInvalidId when unknown.
OSA_PLATFORM_EXPORT CFStringEncoding CFStringConvertWindowsCodepageToEncoding(UInt32 codepage);
OSA_PLATFORM_EXPORT CFStringEncoding CFStringConvertIANACharSetNameToEncoding(CFStringRef name);

/// Orders by UTF-16 unit values, changed by the options above.
OSA_PLATFORM_EXPORT CFComparisonResult CFStringCompare(CFStringRef first, CFStringRef second,
                                                       CFStringCompareFlags options);
/// Where `toFind` stands first, as far as the options go; location kCFNotFound when it does not or
/// is empty.
OSA_PLATFORM_EXPORT CFRange CFStringFind(CFStringRef string, CFStringRef toFind,
                                         CFStringCompareFlags options);
OSA_PLATFORM_EXPORT Boolean CFStringHasPrefix(CFStringRef string, CFStringRef prefix);
OSA_PLATFORM_EXPORT Boolean CFStringHasSuffix(CFStringRef string, CFStringRef suffix);

// Mutable strings. `maxLength` is a promise that the platform does not enforce: text is never cut.
OSA_PLATFORM_EXPORT CFMutableStringRef CFStringCreateMutable(CFAllocatorRef allocator,
                                                             CFIndex maxLength) CF_RETURNS_RETAINED;
OSA_PLATFORM_EXPORT CFMutableStringRef CFStringCreateMutableCopy(
    CFAllocatorRef allocator, CFIndex maxLength, CFStringRef string) CF_RETURNS_RETAINED;
OSA_PLATFORM_EXPORT void CFStringAppend(CFMutableStringRef string, CFStringRef appended);
OSA_PLATFORM_EXPORT void CFStringAppendCharacters(CFMutableStringRef string,
                                                  const UniChar* characters, CFIndex length);
/// Appends nothing when malformed.
OSA_PLATFORM_EXPORT void CFStringAppendCString(CFMutableStringRef string, const char* appended,
                                               CFStringEncoding encoding);
OSA_PLATFORM_EXPORT void CFStringAppendFormat(CFMutableStringRef string, CFDictionaryRef options,
                                              CFStringRef format, ...);
OSA_PLATFORM_EXPORT void CFStringInsert(CFMutableStringRef string, CFIndex index,
                                        CFStringRef inserted);
OSA_PLATFORM_EXPORT void CFStringDelete(CFMutableStringRef string, CFRange range);
OSA_PLATFORM_EXPORT void CFStringReplace(CFMutableStringRef string, CFRange range,
                                         CFStringRef replacement);
OSA_PLATFORM_EXPORT void CFStringReplaceAll(CFMutableStringRef string, CFStringRef replacement);

#ifdef __cplusplus
}
#endif
