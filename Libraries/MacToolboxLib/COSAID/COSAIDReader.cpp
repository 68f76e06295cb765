// Reading values and sources, and descriptors made of scripts.
#include "Libraries/MacToolboxLib/COSAID/COSAIDReader.h"

#include <CoreServices/AEObjects.h>
#include <CoreServices/MacErrors.h>

#include <algorithm>

#include "Libraries/MacToolboxLib/COSAID/COSAIDSupport.h"
#include "Libraries/MacToolboxLib/TBUtilities/Assertions.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"

namespace {

constexpr unsigned kValueLine = 147;

/// Whether the component answers yes, which counts in the answer's most significant byte alone.
bool SaysYes(ComponentInstance component, OSAID id, OSType selector) {
    SInt32 answer = 0;
    if (OSAGetScriptInfo(component, id, selector, &answer) != noErr) return false;
    return static_cast<UInt32>(answer) >> 24 != 0;
}

}  // namespace

CAEDesc::CAEDesc(const COSAIDReader& script) {
    script.Get(&mDesc, typeWildCard, kOSAModeNull);
}

CAEDesc& CAEDesc::operator=(const COSAIDReader& script) {
    script.Get(*this, typeWildCard, kOSAModeNull);
    return *this;
}

void COSAIDReader::SetOSAID(ComponentInstance component, OSAID id) {
    mComponent = component;
    mID = id;
}

DescType COSAIDReader::GetType() const {
    if (mID == kOSANullScript) return typeNull;
    if (SaysYes(mComponent, mID, kOSAScriptIsTypeCompiledScript)) return typeOSAGenericStorage;
    if (SaysYes(mComponent, mID, kOSAScriptIsTypeScriptContext)) return typeOSAGenericStorage;
    SInt32 best = 0;
    FailOSErr(OSAGetScriptInfo(mComponent, mID, kOSAScriptBestType, &best));
    return static_cast<DescType>(best);
}

bool COSAIDReader::IsText() const {
    static constexpr DescType kTexts[] = {typeIntlText,         typeChar,     typeEncodedString,
                                          typeStyledText,       typeUTF8Text, typeUnicodeText,
                                          typeStyledUnicodeText};
    return std::find(std::begin(kTexts), std::end(kTexts), GetType()) != std::end(kTexts);
}

bool COSAIDReader::IsMissingValue() const {
    try {
        return GetType() == typeType && CAEDesc(*this).IsMissingValue();
    } catch (...) {
        return false;
    }
}

bool COSAIDReader::IsUndefined() const {
    try {
        return GetType() == typeType && CAEDesc(*this).IsUndefined();
    } catch (...) {
        return false;
    }
}

bool COSAIDReader::IsFile() const {
    switch (GetType()) {
        case typeFSS:
        case 'file':
        case typeFSRef:
        case typeAlias:
        case 'psxf':
        case typeFileURL:
            return true;
        case typeObjectSpecifier:
            return CAEDesc(*this).IsFile();
        default:
            return false;
    }
}

void COSAIDReader::Compile(const AEDesc* source, SInt32 modeFlags) {
    FailOSErr(OSACompile(mComponent, source, modeFlags, &mID));
}

void COSAIDReader::Get(AEDesc* value, DescType desiredType, SInt32 modeFlags) const {
    if (value == nullptr) {
        ReportFailedAssertion(kCOSAIDUnit, kValueLine, "value");
        return;
    }
    AEInitializeDesc(value);
    if (mID == kOSANullScript) return;
    if (GetType() == typeUnicodeText) {
        switch (desiredType) {
            case typeChar: {
                CAEDesc styled;
                FailOSErr(
                    OSACoerceToDesc(mComponent, mID, typeStyledText, modeFlags, styled.Receive()));
                FailOSErr(AECoerceDesc(&styled.GetDesc(), typeChar, value));
                return;
            }
            case typeWildCard:
            case typeStyledText:
            case typeBest:
            case typeUnicodeText:
                FailOSErr(OSADisplay(mComponent, mID, typeUnicodeText,
                                     modeFlags | kOSAModeDisplayForHumans, value));
                return;
            default:
                break;
        }
    }
    FailOSErr(OSACoerceToDesc(mComponent, mID, desiredType, modeFlags, value));
}

void COSAIDReader::Get(CAEDesc& value, DescType desiredType, SInt32 modeFlags) const {
    Get(value.Receive(), desiredType, modeFlags);
}

void COSAIDReader::Display(AEDesc* result, DescType desiredType, SInt32 modeFlags) const {
    OSAError status = OSADisplay(mComponent, mID, desiredType, modeFlags, result);
    if (status == errAECoercionFail && desiredType == typeStyledText) {
        status = OSADisplay(mComponent, mID, typeChar, kOSAModeNull, result);
    }
    FailOSErr(status);
}

void COSAIDReader::Display(CAEDesc& result, DescType desiredType, SInt32 modeFlags) const {
    Display(result.Receive(), desiredType, modeFlags);
}

void COSAIDReader::Display(TCLString& text, SInt32 modeFlags) const {
    CAEDesc desc;
    Display(desc, typeBest, modeFlags);
    desc.GetString(text);
}

void COSAIDReader::Display(std::string& text, SInt32 modeFlags) const {
    CAEDesc desc;
    Display(desc, typeChar, modeFlags);
    desc.GetString(text);
}

void COSAIDReader::Display(SCoreFoundation<CFStringRef>& text, SInt32 modeFlags) const {
    CAEDesc desc;
    Display(desc, typeUnicodeText, modeFlags);
    desc.GetString(text);
}

void COSAIDReader::GetSource(AEDesc* result, DescType desiredType) const {
    const DescType type = desiredType == typeBest ? DescType{typeStyledText} : desiredType;
    OSAError status = OSAGetSource(mComponent, mID, type, result);
    if (status == errOSAInvalidID) {
        status = OSADisplay(mComponent, mID, typeChar, kOSAModeNull, result);
    }
    if (status == errAECoercionFail && type == typeStyledText) {
        status = OSAGetSource(mComponent, mID, typeChar, result);
    }
    FailOSErr(status);
}

void COSAIDReader::GetSource(CAEDesc& result, DescType desiredType) const {
    GetSource(result.Receive(), desiredType);
}

void COSAIDReader::GetSource(TCLString& source) const {
    CAEDesc desc;
    GetSource(desc, typeUnicodeText);
    desc.GetString(source);
}

void COSAIDReader::GetSource(std::string& source) const {
    CAEDesc desc;
    GetSource(desc, typeChar);
    desc.GetString(source);
}

void COSAIDReader::GetSource(SCoreFoundation<CFStringRef>& source) const {
    CAEDesc desc;
    GetSource(desc, typeUnicodeText);
    desc.GetString(source);
}
