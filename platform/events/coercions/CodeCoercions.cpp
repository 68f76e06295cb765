// Truth values and four-character codes.
#include <CoreFoundation/CFString.h>

#include <algorithm>

#include "platform/base/FourCC.h"
#include "platform/events/coercions/BuiltInCoercions.h"
#include "platform/events/coercions/CoercionData.h"
#include "platform/text/TextConverter.h"

namespace osa {
namespace {

constexpr std::u16string_view kTrueText = u"true";
constexpr std::u16string_view kFalseText = u"false";

bool readTruth(const AEDesc* from, bool& truth) {
    if (from->descriptorType == typeBoolean) {
        Boolean byte = 0;
        if (!readValue(from, byte)) return false;
        truth = byte != 0;
        return true;
    }
    // Of the other types, 'enum' has the code as its value and 'true' and 'fals' are it.
    DescType code = from->descriptorType;
    if (code == typeEnumerated && !readValue(from, code)) return false;
    truth = code == typeTrue;
    return code == typeTrue || code == typeFalse;
}

OSErr writeTruth(bool truth, DescType toType, AEDesc* result) {
    const DescType code = truth ? typeTrue : typeFalse;
    if (toType == typeBoolean) return makeDescOf(toType, Boolean{truth}, result);
    if (toType == typeEnumerated) return makeDescOf(toType, code, result);
    return toType == code ? makeDesc(toType, {}, result) : OSErr{errAECoercionFail};
}

bool equalsIgnoringCase(std::u16string_view text, std::u16string_view lowerCase) {
    return std::equal(text.begin(), text.end(), lowerCase.begin(), lowerCase.end(),
                      [](char16_t unit, char16_t expected) { return foldCase(unit) == expected; });
}

}  // namespace

OSErr truthToTruth(const AEDesc* from, DescType toType, AEDesc* result) {
    bool truth = false;
    return readTruth(from, truth) ? writeTruth(truth, toType, result) : OSErr{errAECoercionFail};
}

OSErr truthToInteger(const AEDesc* from, DescType toType, AEDesc* result) {
    bool truth = false;
    if (!readTruth(from, truth)) return errAECoercionFail;
    OwnedDesc integer;
    const OSErr status = makeDescOf(typeSInt16, SInt16{truth}, integer.out());
    return status != noErr ? status : numberToNumber(integer.get(), toType, result);
}

OSErr integerToTruth(const AEDesc* from, DescType toType, AEDesc* result) {
    OwnedDesc integer;
    const OSErr status = numberToNumber(from, typeSInt64, integer.out());
    if (status != noErr) return status;
    SInt64 value = 0;
    readValue(integer.get(), value);
    return value == 0 || value == 1 ? writeTruth(value == 1, toType, result)
                                    : OSErr{errAECoercionFail};
}

OSErr truthToText(const AEDesc* from, DescType toType, AEDesc* result) {
    bool truth = false;
    if (!readTruth(from, truth)) return errAECoercionFail;
    return writeText(truth ? kTrueText : kFalseText, toType, result);
}

OSErr textToTruth(const AEDesc* from, DescType toType, AEDesc* result) {
    std::u16string units;
    if (const OSErr status = readText(from, units); status != noErr) return status;
    const bool truth = equalsIgnoringCase(units, kTrueText);
    if (!truth && !equalsIgnoringCase(units, kFalseText)) return errAECoercionFail;
    return writeTruth(truth, toType, result);
}

OSErr codeToCode(const AEDesc* from, DescType toType, AEDesc* result) {
    FourCharCode code = 0;
    return readValue(from, code) ? makeDescOf(toType, code, result) : OSErr{errAECoercionFail};
}

OSErr codeToText(const AEDesc* from, DescType toType, AEDesc* result) {
    FourCharCode code = 0;
    std::u16string units;
    if (!readValue(from, code) ||
        !decodeText(asBytes(fourCCBytes(code)), CFStringGetSystemEncoding(), units)) {
        return errAECoercionFail;
    }
    return writeText(units, toType, result);
}

OSErr textToCode(const AEDesc* from, DescType toType, AEDesc* result) {
    std::u16string units;
    if (const OSErr status = readText(from, units); status != noErr) return status;
    // Four bytes are at most four characters, and no character is left out of a code.
    std::string bytes;
    if (units.size() > 4 ||
        encodeText(units, CFStringGetSystemEncoding(), 0, bytes) != units.size() ||
        bytes.size() != 4) {
        return errAECoercionFail;
    }
    ByteReader reader(asBytes(bytes));
    return makeDescOf(toType, reader.fourCC(), result);
}

}  // namespace osa
