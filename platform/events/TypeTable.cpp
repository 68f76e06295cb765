// How the data of the types that the manager knows are made up.
#include "platform/events/TypeTable.h"

#include <algorithm>

namespace osa {
namespace {

constexpr PlainType kPlainTypes[] = {
    {typeNull, 1, {}},
    {typeBoolean, 1, {}},
    {typeTrue, 1, {}},
    {typeFalse, 1, {}},
    {typeSInt16, 2, {}},
    {typeUInt16, 2, {}},
    {typeSInt32, 4, {}},
    {typeUInt32, 4, {}},
    {typeSInt64, 8, {}},
    {typeUInt64, 8, {}},
    {typeIEEE32BitFloatingPoint, 4, {}},
    {typeIEEE64BitFloatingPoint, 8, {}},
    {typeFixed, 4, {}},
    {typeChar, 1, {}},
    {typeCString, 1, {}},
    {typePString, 1, {}},
    {typeIntlText, 1, {2, 2}},
    {typeUTF8Text, 1, {}},
    {typeUnicodeText, 2, {}},
    {typeUTF16ExternalRepresentation, 1, {}},
    {typeEncodedString, 1, {}},
    {typeType, 4, {}},
    {typeEnumerated, 4, {}},
    {typeProperty, 4, {}},
    {typeKeyword, 4, {}},
    {typeAbsoluteOrdinal, 4, {}},
    {typeApplSignature, 4, {}},
    {typeAlias, 1, {}},
    {typeFSRef, 1, {}},  // means something only within the process
    {typeFSS, 1, {2, 4}},
    {typeFileURL, 1, {}},
    {typeLongDateTime, 8, {}},
    {typeRGBColor, 2, {}},
    {typeQDRectangle, 2, {}},
    {typeQDPoint, 2, {}},
    {typeProcessSerialNumber, 4, {}},
    {typeApplicationBundleID, 1, {}},
    {typeApplicationURL, 1, {}},
};

}  // namespace

const PlainType* plainTypeOf(DescType type) {
    const auto* const found = std::ranges::find(kPlainTypes, type, &PlainType::type);
    return found == std::end(kPlainTypes) ? nullptr : found;
}

}  // namespace osa
