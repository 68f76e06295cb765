// Apple event descriptors: a type code and a block of data.
#pragma once

#include <CoreServices/MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef ResType DescType;
/// The handle behind a descriptor's data; its block is the data itself. Null for the null
/// descriptor.
typedef Handle AEDataStorage;

/// A descriptor owns its data: AEDisposeDesc frees it. Copying the struct makes a second name for
/// the same data, not a second descriptor.
typedef struct AEDesc {
    DescType descriptorType;
    AEDataStorage dataHandle;
} AEDesc;

// clang-format off
enum {
    typeNull            = 'null',
    typeWildCard        = '****',
    typeBoolean         = 'bool',
    typeTrue            = 'true',
    typeFalse           = 'fals',
    typeSInt16          = 'shor',
    typeSInt32          = 'long',
    typeUInt32          = 'magn',
    typeSInt64          = 'comp',
    typeIEEE32BitFloatingPoint = 'sing',
    typeIEEE64BitFloatingPoint = 'doub',
    typeFixed           = 'fixd',
    typeChar            = 'TEXT',
    typeStyledText      = 'STXT',
    typeIntlText        = 'itxt',
    typeUTF8Text        = 'utf8',
    typeUnicodeText     = 'utxt',
    typeEncodedString   = 'encs',
    typeStyledUnicodeText = 'sutx',
    typeType            = 'type',
    typeEnumerated      = 'enum',
    typeAlias           = 'alis',
    typeFSRef           = 'fsrf',
    typeFSS             = 'fss ',
    typeFileURL         = 'furl',
    typeObjectSpecifier = 'obj ',
    typeAEList          = 'list',
    typeAERecord        = 'reco',
    typeAppleEvent      = 'aevt',
    typeProcessSerialNumber = 'psn ',
    typeApplSignature   = 'sign'
};
// clang-format on

/// Makes a descriptor with a copy of `size` bytes. Its handle is null for typeNull only; any other
/// type has one, if of no bytes. paramErr for a null output, a negative size, or null data of some
/// size.
OSA_PLATFORM_EXPORT OSErr AECreateDesc(DescType type, const void* data, Size size, AEDesc* result);
/// Frees the data and leaves the null descriptor. A null pointer is paramErr.
OSA_PLATFORM_EXPORT OSErr AEDisposeDesc(AEDesc* desc);
/// An independent copy in `result`, which should hold nothing; it is the null descriptor on
/// failure.
OSA_PLATFORM_EXPORT OSErr AEDuplicateDesc(const AEDesc* desc, AEDesc* result);

/// Bytes of data; 0 for a null handle or pointer.
OSA_PLATFORM_EXPORT Size AEGetDescDataSize(const AEDesc* desc);
/// Copies at most `maximumSize` bytes. A null handle gives none and noErr; a null descriptor, a
/// negative size, or a null buffer of some size is paramErr.
OSA_PLATFORM_EXPORT OSErr AEGetDescData(const AEDesc* desc, void* buffer, Size maximumSize);

/// `desc` as a new descriptor of type `toType` in `result`, which is the null descriptor on
/// failure: a duplicate for its own type or typeWildCard; between typeFSRef and typeFileURL by the
/// File Manager (fnfErr for an object that is not there). errAECoercionFail for every other pair.
OSA_PLATFORM_EXPORT OSErr AECoerceDesc(const AEDesc* desc, DescType toType, AEDesc* result);

#ifdef __cplusplus
}
#endif
