// Apple event descriptors: a type code and a block of data; lists, records and events of them; and
// the coercion of one type into another.
//
// Conventions. Every call answers a status. A descriptor handed back belongs to the caller, who
// disposes of it with AEDisposeDesc; it is the null descriptor whenever the status is not noErr.
// What is put into a list, record or event is copied. Numbers, codes and 'utxt' units in a
// descriptor's data are in host order. Statuses that every call may answer besides its own:
//   paramErr             a null pointer where one is needed, a negative size
//   memFullErr           no room, or the data would exceed the 2 GiB that a handle holds
//   errAEWrongDataType   the descriptor is no list, record or event although it must be one
//   errAECorruptData     a list, record or event whose bytes were tampered with
// A descriptor may be read on several threads at once while nobody changes it.
#pragma once

#include <CoreServices/MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef ResType DescType;
typedef FourCharCode AEKeyword;
typedef FourCharCode AEEventClass;
typedef FourCharCode AEEventID;
typedef SInt16 AEReturnID;
typedef SInt32 AETransactionID;

/// The handle behind a descriptor's data. For most types its block is the data itself; the block of
/// a list, record or event has a form that is private to the manager. Null for the null descriptor.
typedef Handle AEDataStorage;

/// A descriptor owns its data: AEDisposeDesc frees it. Copying the struct makes a second name for
/// the same data, not a second descriptor.
typedef struct AEDesc {
    DescType descriptorType;
    AEDataStorage dataHandle;
} AEDesc;

/// Items by index, counted from 1.
typedef AEDesc AEDescList;
/// Items by keyword. The type is 'reco' or that of whatever is shaped like a record ('obj ',
/// 'STXT').
typedef AEDescList AERecord;
typedef AEDesc AEAddressDesc;
/// Parameters by keyword, and apart from them attributes by keyword.
typedef AERecord AppleEvent;

// clang-format off
enum {
    typeNull            = 'null',
    typeWildCard        = '****',
    typeBest            = 'best',
    typeBoolean         = 'bool',   ///< one byte
    typeTrue            = 'true',   ///< no data
    typeFalse           = 'fals',
    typeSInt16          = 'shor',
    typeUInt16          = 'ushr',
    typeSInt32          = 'long',
    typeUInt32          = 'magn',
    typeSInt64          = 'comp',
    typeUInt64          = 'ucom',
    typeIEEE32BitFloatingPoint = 'sing',
    typeIEEE64BitFloatingPoint = 'doub',
    typeFixed           = 'fixd',
    typeChar            = 'TEXT',   ///< bytes in the system encoding
    typeCString         = 'cstr',   ///< the same, ended by a zero byte
    typePString         = 'pstr',   ///< the same behind a length byte
    typeStyledText      = 'STXT',   ///< record: 'ktxt' text, 'ksty' styles
    typeIntlText        = 'itxt',   ///< script code, language code, bytes
    typeUTF8Text        = 'utf8',
    typeUnicodeText     = 'utxt',   ///< UTF-16 units, no byte-order mark
    typeUTF16ExternalRepresentation = 'ut16',  ///< UTF-16; big-endian unless a mark says otherwise
    typeEncodedString   = 'encs',
    typeStyledUnicodeText = 'sutx', ///< record: 'ktxt' as 'utxt', 'ksty' styles
    typeType            = 'type',
    typeEnumerated      = 'enum',
    typeProperty        = 'prop',
    typeKeyword         = 'keyw',
    typeAbsoluteOrdinal = 'abso',
    typeAlias           = 'alis',
    typeFSRef           = 'fsrf',
    typeFSS             = 'fss ',
    typeFileURL         = 'furl',
    typeLongDateTime    = 'ldt ',   ///< signed 64-bit count of seconds
    typeRGBColor        = 'cRGB',
    typeQDRectangle     = 'qdrt',
    typeQDPoint         = 'QDpt',
    typeAEList          = 'list',
    typeAERecord        = 'reco',
    typeAppleEvent      = 'aevt',
    typeProcessSerialNumber = 'psn ',
    typeApplSignature   = 'sign',
    typeApplicationBundleID = 'bund',
    typeApplicationURL  = 'aprl',
    typeAppParameters   = 'appa'    ///< AppParameters (Processes.h) and the flattened event
};

/// Attributes of events.
enum {
    keyEventClassAttr       = 'evcl',   ///< 'type'
    keyEventIDAttr          = 'evid',   ///< 'type'
    keyReturnIDAttr         = 'rtid',   ///< 'long'
    keyTransactionIDAttr    = 'tran',   ///< 'long'
    keyAddressAttr          = 'addr',
    keyTimeoutAttr          = 'timo',
    keyInteractLevelAttr    = 'inte',
    keyEventSourceAttr      = 'esrc',
    keyMissedKeywordAttr    = 'miss',   ///< 'keyw', computed: see AEGetAttributePtr
    keyOriginalAddressAttr  = 'from',
    keyOptionalKeywordAttr  = 'optk',   ///< a list of keywords
    keySubjectAttr          = 'subj',
    keyReplyRequestedAttr   = 'repq'
};

enum { keyDirectObject = '----' };

enum { kAutoGenerateReturnID = -1 };
enum { kAnyTransactionID = 0 };
// clang-format on

// Descriptors

/// Makes the null descriptor of whatever `desc` held before, which is not disposed of.
OSA_PLATFORM_EXPORT void AEInitializeDesc(AEDesc* desc);
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
/// Gives `desc` another type and a copy of other data; on failure it stays as it was.
OSA_PLATFORM_EXPORT OSErr AEReplaceDescData(DescType type, const void* data, Size size,
                                            AEDesc* desc);

// Lists. An index is counted from 1; one outside answers errAEIllegalIndex. Records and the
// parameters of events have items too, in the order in which they were put; their keywords come
// back through `keyword`, which is typeWildCard for the items of a plain list. Output pointers but
// `result` may be null.

/// An empty list or record. `factoringPtr` and `factoredSize` are not used and should be null and
/// 0.
OSA_PLATFORM_EXPORT OSErr AECreateList(const void* factoringPtr, Size factoredSize,
                                       Boolean isRecord, AEDescList* result);
OSA_PLATFORM_EXPORT OSErr AECountItems(const AEDescList* list, SInt32* count);
/// Puts a copy of `desc`, which may be the list itself, in place of the item at `index`; 0, or one
/// more than there are, appends. errAEWrongDataType for records and events, whose items need a
/// keyword. Appending takes constant time, amortised.
OSA_PLATFORM_EXPORT OSErr AEPutDesc(AEDescList* list, SInt32 index, const AEDesc* desc);
OSA_PLATFORM_EXPORT OSErr AEPutPtr(AEDescList* list, SInt32 index, DescType type, const void* data,
                                   Size size);
/// The item coerced to `desiredType`; typeWildCard gives it as it is. Going through the items in
/// order takes constant time for each, also for two that do so at once.
OSA_PLATFORM_EXPORT OSErr AEGetNthDesc(const AEDescList* list, SInt32 index, DescType desiredType,
                                       AEKeyword* keyword, AEDesc* result);
/// The coerced item's data, at most `maximumSize` bytes of it, its type and its whole size.
OSA_PLATFORM_EXPORT OSErr AEGetNthPtr(const AEDescList* list, SInt32 index, DescType desiredType,
                                      AEKeyword* keyword, DescType* actualType, void* buffer,
                                      Size maximumSize, Size* actualSize);
OSA_PLATFORM_EXPORT OSErr AESizeOfNthItem(const AEDescList* list, SInt32 index, DescType* type,
                                          Size* size);
OSA_PLATFORM_EXPORT OSErr AEDeleteItem(AEDescList* list, SInt32 index);
/// Whether the descriptor is shaped like a record; an event is too.
OSA_PLATFORM_EXPORT Boolean AECheckIsRecord(const AEDesc* desc);

// Record fields and event parameters, by keyword. errAEDescNotFound when there is none of it.
// Putting replaces a field of the same keyword. Reading a parameter of an event marks it as read.

OSA_PLATFORM_EXPORT OSErr AEPutParamDesc(AppleEvent* event, AEKeyword keyword, const AEDesc* desc);
OSA_PLATFORM_EXPORT OSErr AEPutParamPtr(AppleEvent* event, AEKeyword keyword, DescType type,
                                        const void* data, Size size);
OSA_PLATFORM_EXPORT OSErr AEGetParamDesc(const AppleEvent* event, AEKeyword keyword,
                                         DescType desiredType, AEDesc* result);
OSA_PLATFORM_EXPORT OSErr AEGetParamPtr(const AppleEvent* event, AEKeyword keyword,
                                        DescType desiredType, DescType* actualType, void* buffer,
                                        Size maximumSize, Size* actualSize);
OSA_PLATFORM_EXPORT OSErr AESizeOfParam(const AppleEvent* event, AEKeyword keyword, DescType* type,
                                        Size* size);
OSA_PLATFORM_EXPORT OSErr AEDeleteParam(AppleEvent* event, AEKeyword keyword);

#define AEPutKeyDesc(record, keyword, desc) AEPutParamDesc((record), (keyword), (desc))
#define AEPutKeyPtr(record, keyword, type, data, size) \
    AEPutParamPtr((record), (keyword), (type), (data), (size))
#define AEGetKeyDesc(record, keyword, type, result) \
    AEGetParamDesc((record), (keyword), (type), (result))
#define AEGetKeyPtr(record, keyword, type, actualType, buffer, maximumSize, actualSize) \
    AEGetParamPtr((record), (keyword), (type), (actualType), (buffer), (maximumSize), (actualSize))
#define AESizeOfKeyDesc(record, keyword, type, size) \
    AESizeOfParam((record), (keyword), (type), (size))
#define AEDeleteKeyDesc(record, keyword) AEDeleteParam((record), (keyword))

// Events

/// An event without parameters, with the attributes 'evcl', 'evid', 'rtid', 'tran' and, unless
/// `target` is null or the null descriptor, 'addr'. kAutoGenerateReturnID makes a return ID above
/// 0.
OSA_PLATFORM_EXPORT OSErr AECreateAppleEvent(AEEventClass eventClass, AEEventID eventID,
                                             const AEAddressDesc* target, AEReturnID returnID,
                                             AETransactionID transactionID, AppleEvent* result);
/// errAENotAppleEvent when `event` is none; so for all calls on attributes. keyMissedKeywordAttr is
/// never kept: what is put under it is dropped.
OSA_PLATFORM_EXPORT OSErr AEPutAttributeDesc(AppleEvent* event, AEKeyword keyword,
                                             const AEDesc* desc);
OSA_PLATFORM_EXPORT OSErr AEPutAttributePtr(AppleEvent* event, AEKeyword keyword, DescType type,
                                            const void* data, Size size);
/// keyMissedKeywordAttr answers the keyword of the first parameter that was not read yet and is not
/// listed in keyOptionalKeywordAttr; errAEDescNotFound when there is none.
OSA_PLATFORM_EXPORT OSErr AEGetAttributeDesc(const AppleEvent* event, AEKeyword keyword,
                                             DescType desiredType, AEDesc* result);
OSA_PLATFORM_EXPORT OSErr AEGetAttributePtr(const AppleEvent* event, AEKeyword keyword,
                                            DescType desiredType, DescType* actualType,
                                            void* buffer, Size maximumSize, Size* actualSize);
OSA_PLATFORM_EXPORT OSErr AESizeOfAttribute(const AppleEvent* event, AEKeyword keyword,
                                            DescType* type, Size* size);

// Coercion

/// `desc` as a new descriptor in `result`: for its own type or typeWildCard a duplicate, else what
/// the first installed handler gives that does not answer errAECoercionFail, else the manager's own
/// coercion (docs/apple-events.md lists them). errAECoercionFail when there is no way, the value
/// does not fit, or handlers coerce in a circle; fnfErr and the like for files. `result` may be of
/// another type than `toType` when a handler decides so.
OSA_PLATFORM_EXPORT OSErr AECoerceDesc(const AEDesc* desc, DescType toType, AEDesc* result);
OSA_PLATFORM_EXPORT OSErr AECoercePtr(DescType type, const void* data, Size size, DescType toType,
                                      AEDesc* result);

/// A handler that is given a descriptor, or one that is given its data. It makes `result` and
/// answers a status; errAECoercionFail leaves the matter to the next.
typedef OSErr (*AECoerceDescProcPtr)(const AEDesc* from, DescType toType, SInt32 refcon,
                                     AEDesc* result);
typedef OSErr (*AECoercePtrProcPtr)(DescType type, const void* data, Size size, DescType toType,
                                    SInt32 refcon, AEDesc* result);
/// Either of the two.
typedef void (*AECoercionHandlerUPP)(void);

/// Installs a handler for a pair of types, either of which may be typeWildCard, in place of an
/// older one for exactly that pair. Handlers are asked in this order: those of the application
/// before the system's; among them the exact pair, then (from, any), (any, to), (any, any). All
/// threads share the tables. `fromTypeIsDesc` says which shape the handler has.
OSA_PLATFORM_EXPORT OSErr AEInstallCoercionHandler(DescType fromType, DescType toType,
                                                   AECoercionHandlerUPP handler, SInt32 refcon,
                                                   Boolean fromTypeIsDesc, Boolean isSysHandler);
/// errAEHandlerNotFound when no handler is installed for exactly that pair, or (when `handler` is
/// not null) another one.
OSA_PLATFORM_EXPORT OSErr AERemoveCoercionHandler(DescType fromType, DescType toType,
                                                  AECoercionHandlerUPP handler,
                                                  Boolean isSysHandler);
OSA_PLATFORM_EXPORT OSErr AEGetCoercionHandler(DescType fromType, DescType toType,
                                               AECoercionHandlerUPP* handler, SInt32* refcon,
                                               Boolean* fromTypeIsDesc, Boolean isSysHandler);

// Descriptors as streams of bytes, to be kept in files. docs/formats/flattened-descriptors.md has
// the form, which does not depend on the machine.

/// Bytes that AEFlattenDesc needs; 0 for a null pointer, or when that would exceed 2 GiB.
OSA_PLATFORM_EXPORT Size AESizeOfFlattenedDesc(const AEDesc* desc);
/// errAEBufferTooSmall, with `actualSize` (may be null) told all the same; errAECorruptData when a
/// list, record or event inside is damaged: the buffer's contents are then undefined.
OSA_PLATFORM_EXPORT OSStatus AEFlattenDesc(const AEDesc* desc, Ptr buffer, Size bufferSize,
                                           Size* actualSize);
/// errAECorruptData for bytes that are no flattened descriptor, at whatever depth; bytes behind it
/// are ignored.
OSA_PLATFORM_EXPORT OSStatus AEUnflattenDescFromBytes(const void* buffer, size_t bufferSize,
                                                      AEDesc* result);
/// For bytes that are known to come from AEFlattenDesc: nothing tells how many there are but they
/// themselves.
OSA_PLATFORM_EXPORT OSStatus AEUnflattenDesc(const void* buffer, AEDesc* result);

#ifdef __cplusplus
}
#endif
