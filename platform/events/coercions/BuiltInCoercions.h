// The functions behind the rows of the coercion table, by the file that holds them. All answer
// errAECoercionFail for data that is not of the source type or a value that has no equal in the
// target type; docs/apple-events.md describes each.
#pragma once

#include <CoreServices/AEDataModel.h>

#include <string>
#include <string_view>

namespace osa {

// TextCoercions.cpp
OSErr textToText(const AEDesc* from, DescType toType, AEDesc* result);
/// Between text and types whose data is UTF-8: URLs and bundle identifiers.
OSErr utf8ToText(const AEDesc* from, DescType toType, AEDesc* result);
OSErr textToUTF8(const AEDesc* from, DescType toType, AEDesc* result);
/// Reads a descriptor of any text type as UTF-16, appended to `units`.
OSErr readText(const AEDesc* from, std::u16string& units);
/// Makes a descriptor of any text type.
OSErr writeText(std::u16string_view units, DescType toType, AEDesc* result);

// NumberCoercions.cpp
OSErr numberToNumber(const AEDesc* from, DescType toType, AEDesc* result);
OSErr numberToText(const AEDesc* from, DescType toType, AEDesc* result);
OSErr textToNumber(const AEDesc* from, DescType toType, AEDesc* result);

// CodeCoercions.cpp
OSErr truthToTruth(const AEDesc* from, DescType toType, AEDesc* result);
OSErr truthToInteger(const AEDesc* from, DescType toType, AEDesc* result);
OSErr integerToTruth(const AEDesc* from, DescType toType, AEDesc* result);
OSErr truthToText(const AEDesc* from, DescType toType, AEDesc* result);
OSErr textToTruth(const AEDesc* from, DescType toType, AEDesc* result);
OSErr codeToCode(const AEDesc* from, DescType toType, AEDesc* result);
OSErr codeToText(const AEDesc* from, DescType toType, AEDesc* result);
OSErr textToCode(const AEDesc* from, DescType toType, AEDesc* result);

// ContainerCoercions.cpp
OSErr anythingToList(const AEDesc* from, DescType toType, AEDesc* result);
OSErr listToOnlyItem(const AEDesc* from, DescType toType, AEDesc* result);
/// Rectangle, point, colour: a list of their numbers.
OSErr shapeToList(const AEDesc* from, DescType toType, AEDesc* result);
OSErr listToShape(const AEDesc* from, DescType toType, AEDesc* result);
OSErr eventToRecord(const AEDesc* from, DescType toType, AEDesc* result);
/// Another type for the same content of a record.
OSErr recordToRecord(const AEDesc* from, DescType toType, AEDesc* result);
/// The same for types of which the table knows nothing.
OSErr recordToUnknown(const AEDesc* from, DescType toType, AEDesc* result);

// FileCoercions.cpp
OSErr fileToFile(const AEDesc* from, DescType toType, AEDesc* result);
OSErr fileToText(const AEDesc* from, DescType toType, AEDesc* result);
OSErr fileToSignature(const AEDesc* from, DescType toType, AEDesc* result);

// ProcessCoercions.cpp
OSErr processToSignature(const AEDesc* from, DescType toType, AEDesc* result);
OSErr processToBundleID(const AEDesc* from, DescType toType, AEDesc* result);
OSErr signatureToProcess(const AEDesc* from, DescType toType, AEDesc* result);
OSErr bundleIDToProcess(const AEDesc* from, DescType toType, AEDesc* result);

// LaunchParameters.cpp
OSErr eventToAppParameters(const AEDesc* from, DescType toType, AEDesc* result);

// CoercionTable.cpp
OSErr refuse(const AEDesc* from, DescType toType, AEDesc* result);

}  // namespace osa
