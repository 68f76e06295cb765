// The coercion table: which types go into which, and how.
#include "platform/events/coercions/CoercionTable.h"

#include <CoreServices/AEObjects.h>
#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <span>

#include "platform/base/FourCC.h"
#include "platform/events/coercions/BuiltInCoercions.h"

namespace osa {
namespace {

// clang-format off
constexpr DescType kAny[]        = {typeWildCard};

constexpr DescType kText[]       = {typeChar, typeUnicodeText, typeUTF8Text, typeIntlText,
                                    typeStyledText, typeStyledUnicodeText, typeEncodedString,
                                    typeUTF16ExternalRepresentation, typeCString, typePString,
                                    FourCC("ctxt")};
constexpr DescType kNumbers[]    = {typeSInt16, typeUInt16, typeSInt32, typeUInt32, typeSInt64,
                                    typeUInt64, typeFixed, typeIEEE32BitFloatingPoint,
                                    typeIEEE64BitFloatingPoint};
constexpr DescType kIntegers[]   = {typeSInt16, typeUInt16, typeSInt32, typeUInt32, typeSInt64,
                                    typeUInt64};
constexpr DescType kTruth[]      = {typeBoolean, typeTrue, typeFalse};
constexpr DescType kEnumerated[] = {typeEnumerated};
constexpr DescType kCodes[]      = {typeType, typeEnumerated, typeProperty, typeAbsoluteOrdinal,
                                    typeKeyword, typeApplSignature};

constexpr DescType kList[]       = {typeAEList};
constexpr DescType kShapes[]     = {typeQDRectangle, typeQDPoint, typeRGBColor};
constexpr DescType kEvent[]      = {typeAppleEvent};
constexpr DescType kParameters[] = {typeAppParameters};
constexpr DescType kRecord[]     = {typeAERecord};
constexpr DescType kRecordLike[] = {typeObjectSpecifier, typeStyledText, typeStyledUnicodeText};

constexpr DescType kFiles[]      = {typeAlias, typeFSRef, typeFSS, typeFileURL};
constexpr DescType kPathFiles[]  = {typeAlias, typeFSRef, typeFSS};
constexpr DescType kReference[]  = {typeFSRef};
constexpr DescType kUTF8Data[]   = {typeFileURL, typeApplicationURL, typeApplicationBundleID};
constexpr DescType kProcess[]    = {typeProcessSerialNumber};
constexpr DescType kSignature[]  = {typeApplSignature};
constexpr DescType kBundleID[]   = {typeApplicationBundleID};

constexpr DescType kNull[]       = {typeNull};
/// Types that mean something else than a record, but that nothing else leads to.
constexpr DescType kNoTargets[]  = {typeNull, typeBest, typeLongDateTime};
// clang-format on

struct Row {
    std::span<const DescType> from;
    std::span<const DescType> to;
    Coercion coercion;
};

// The first row that has both types counts, so what is special stands before what is general:
// everything becomes a list of one, but for the shapes; a list of one becomes anything, but for the
// shapes; a record takes on the types that no other row names.
constexpr Row kRows[] = {
    {kShapes, kList, shapeToList},
    {kAny, kList, anythingToList},
    {kNull, kAny, refuse},
    {kAny, kNoTargets, refuse},

    {kList, kShapes, listToShape},
    {kList, kAny, listToOnlyItem},

    {kText, kText, textToText},
    {kNumbers, kNumbers, numberToNumber},
    {kNumbers, kText, numberToText},
    {kText, kNumbers, textToNumber},

    {kTruth, kTruth, truthToTruth},
    {kTruth, kEnumerated, truthToTruth},
    {kEnumerated, kTruth, truthToTruth},
    {kTruth, kIntegers, truthToInteger},
    {kIntegers, kTruth, integerToTruth},
    {kTruth, kText, truthToText},
    {kText, kTruth, textToTruth},

    {kCodes, kCodes, codeToCode},
    {kCodes, kText, codeToText},
    {kText, kCodes, textToCode},

    {kFiles, kFiles, fileToFile},
    {kPathFiles, kText, fileToText},
    {kReference, kSignature, fileToSignature},
    {kUTF8Data, kText, utf8ToText},
    {kText, kBundleID, textToUTF8},

    {kProcess, kSignature, processToSignature},
    {kProcess, kBundleID, processToBundleID},
    {kSignature, kProcess, signatureToProcess},
    {kBundleID, kProcess, bundleIDToProcess},

    {kEvent, kRecord, eventToRecord},
    {kEvent, kParameters, eventToAppParameters},
    {kAny, kRecord, recordToRecord},
    {kRecord, kRecordLike, recordToRecord},
    {kRecord, kAny, recordToUnknown},
};

bool has(std::span<const DescType> types, DescType type) {
    return types.data() == kAny || std::ranges::find(types, type) != types.end();
}

}  // namespace

Coercion findCoercion(DescType from, DescType to) {
    const auto row = std::ranges::find_if(
        kRows, [&](const Row& each) { return has(each.from, from) && has(each.to, to); });
    return row == std::end(kRows) ? nullptr : row->coercion;
}

bool isNamedInTable(DescType type) {
    return std::ranges::any_of(kRows, [&](const Row& row) {
        return std::ranges::find(row.from, type) != row.from.end() ||
               std::ranges::find(row.to, type) != row.to.end();
    });
}

OSErr refuse(const AEDesc*, DescType, AEDesc*) {
    return errAECoercionFail;
}

}  // namespace osa
