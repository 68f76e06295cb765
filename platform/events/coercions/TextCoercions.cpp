// The text types, each read into UTF-16 and written from it.
#include <CoreFoundation/CFString.h>
#include <CoreServices/AEObjects.h>

#include "platform/base/FourCC.h"
#include "platform/events/coercions/BuiltInCoercions.h"
#include "platform/events/coercions/CoercionData.h"
#include "platform/text/TextConverter.h"

namespace osa {
namespace {

constexpr UInt8 kLossByte = '?';
/// Script codes are the numbers of the first 33 Mac encodings.
constexpr UInt32 kLastScript = 32;
/// The script code that stands for the system's.
constexpr SInt16 kSystemScript = -1;

struct IntlTextHead {
    SInt16 script;
    SInt16 language;
};

// Readers: the data of one type as UTF-16; false when malformed.

bool readSystemText(ByteSpan bytes, std::u16string& units) {
    return decodeText(bytes, CFStringGetSystemEncoding(), units);
}

bool readCString(ByteSpan bytes, std::u16string& units) {
    const std::size_t end = asText(bytes).find('\0');
    return readSystemText(end == std::string_view::npos ? bytes : bytes.first(end), units);
}

bool readPascalString(ByteSpan bytes, std::u16string& units) {
    ByteReader reader(bytes);
    const std::string_view text = reader.pascalString();
    return reader.ok() && readSystemText(asBytes(text), units);
}

bool readIntlText(ByteSpan bytes, std::u16string& units) {
    IntlTextHead head;
    if (bytes.size() < sizeof head) return false;
    std::memcpy(&head, bytes.data(), sizeof head);
    const auto script = static_cast<UInt32>(head.script);
    const bool known = script <= kLastScript && isEncodingKnown(script);
    return decodeText(bytes.subspan(sizeof head), known ? script : CFStringGetSystemEncoding(),
                      units);
}

bool readUTF8(ByteSpan bytes, std::u16string& units) {
    const ByteOrderMark mark = detectMark(bytes);
    const bool dropMark = mark.encoding == kTextEncodingUTF8;
    return decodeText(dropMark ? bytes.subspan(mark.length) : bytes, kTextEncodingUTF8, units);
}

bool readUnicode(ByteSpan bytes, std::u16string& units) {
    return decodeText(bytes, kTextEncodingUTF16, units);
}

bool readExternalUTF16(ByteSpan bytes, std::u16string& units) {
    const ByteOrderMark mark = detectMark(bytes);
    const bool marked = mark.length == 2;
    return decodeText(marked ? bytes.subspan(mark.length) : bytes,
                      marked ? mark.encoding : kTextEncodingUTF16BE, units);
}

// Writers: the data of one type, appended to no bytes; false when the text does not fit.

bool writeSystemText(std::u16string_view units, std::string& bytes) {
    encodeText(units, CFStringGetSystemEncoding(), kLossByte, bytes);
    return true;
}

bool writeCString(std::u16string_view units, std::string& bytes) {
    writeSystemText(units.substr(0, units.find(u'\0')), bytes);
    bytes.push_back('\0');
    return true;
}

bool writePascalString(std::u16string_view units, std::string& bytes) {
    bytes.push_back('\0');
    writeSystemText(units, bytes);
    if (bytes.size() > 256) return false;
    bytes.front() = static_cast<char>(bytes.size() - 1);
    return true;
}

bool writeIntlText(std::u16string_view units, std::string& bytes) {
    const UInt32 encoding = CFStringGetSystemEncoding();
    const bool isScript = encoding <= kLastScript;
    const IntlTextHead head = {isScript ? static_cast<SInt16>(encoding) : kSystemScript, 0};
    bytes.append(reinterpret_cast<const char*>(&head), sizeof head);
    return writeSystemText(units, bytes);
}

bool writeUTF8(std::u16string_view units, std::string& bytes) {
    encodeText(units, kTextEncodingUTF8, kLossByte, bytes);
    return true;
}

bool writeUnicode(std::u16string_view units, std::string& bytes) {
    encodeText(units, kTextEncodingUTF16, 0, bytes);
    return true;
}

bool writeExternalUTF16(std::u16string_view units, std::string& bytes) {
    bytes = "\xFE\xFF";
    encodeText(units, kTextEncodingUTF16BE, 0, bytes);
    return true;
}

struct TextForm {
    DescType type;
    bool (*read)(ByteSpan bytes, std::u16string& units);
    bool (*write)(std::u16string_view units, std::string& bytes);
};

constexpr TextForm kTextForms[] = {
    {typeChar, readSystemText, writeSystemText},
    {FourCC("ctxt"), readSystemText, writeSystemText},
    {typeEncodedString, readSystemText, writeSystemText},
    {typeCString, readCString, writeCString},
    {typePString, readPascalString, writePascalString},
    {typeIntlText, readIntlText, writeIntlText},
    {typeUTF8Text, readUTF8, writeUTF8},
    {typeUnicodeText, readUnicode, writeUnicode},
    {typeUTF16ExternalRepresentation, readExternalUTF16, writeExternalUTF16},
};

/// A record of text and styles, and the type of text that is put into it.
struct StyledForm {
    DescType type;
    DescType textType;
};

constexpr StyledForm kStyledForms[] = {
    {typeStyledText, typeChar},
    {typeStyledUnicodeText, typeUnicodeText},
};

template <typename Form, std::size_t N>
const Form* formOf(const Form (&forms)[N], DescType type) {
    for (const Form& form : forms) {
        if (form.type == type) return &form;
    }
    return nullptr;
}

OSErr readPlainText(const AEDesc* from, std::u16string& units) {
    const TextForm* const form = formOf(kTextForms, from->descriptorType);
    return form != nullptr && form->read(dataOf(*from), units) ? noErr : errAECoercionFail;
}

OSErr writePlainText(std::u16string_view units, DescType toType, AEDesc* result) {
    const TextForm* const form = formOf(kTextForms, toType);
    std::string bytes;
    if (form == nullptr || !form->write(units, bytes)) return errAECoercionFail;
    return makeDesc(toType, bytes, result);
}

/// The text of a styled text is plain, so that there is nothing to descend into.
OSErr readStyledText(const AEDesc* from, std::u16string& units) {
    if (AECheckIsRecord(from) == 0) {
        // Some make it of the characters alone.
        return readSystemText(dataOf(*from), units) ? noErr : errAECoercionFail;
    }
    OwnedDesc text;
    const OSErr status = AEGetKeyDesc(from, keyAEText, typeWildCard, text.out());
    if (status == errAEDescNotFound) return errAECoercionFail;
    return status != noErr ? status : readPlainText(text.get(), units);
}

OSErr writeStyledText(std::u16string_view units, const StyledForm& form, AEDesc* result) {
    constexpr UInt16 kNoStyles = 0;
    OwnedDesc text;
    OwnedDesc record;
    OSErr status = writePlainText(units, form.textType, text.out());
    if (status == noErr) status = AECreateList(nullptr, 0, 1, record.out());
    if (status == noErr) status = AEPutKeyDesc(record.out(), keyAEText, text.get());
    if (status == noErr) {
        status =
            AEPutKeyPtr(record.out(), keyAEStyles, FourCC("styl"), &kNoStyles, sizeof kNoStyles);
    }
    if (status != noErr) return status;
    record.out()->descriptorType = form.type;
    *result = record.leak();
    return noErr;
}

}  // namespace

OSErr readText(const AEDesc* from, std::u16string& units) {
    const bool isStyled = formOf(kStyledForms, from->descriptorType) != nullptr;
    return isStyled ? readStyledText(from, units) : readPlainText(from, units);
}

OSErr writeText(std::u16string_view units, DescType toType, AEDesc* result) {
    const StyledForm* const styled = formOf(kStyledForms, toType);
    return styled != nullptr ? writeStyledText(units, *styled, result)
                             : writePlainText(units, toType, result);
}

OSErr textToText(const AEDesc* from, DescType toType, AEDesc* result) {
    std::u16string units;
    const OSErr status = readText(from, units);
    return status != noErr ? status : writeText(units, toType, result);
}

OSErr utf8ToText(const AEDesc* from, DescType toType, AEDesc* result) {
    std::u16string units;
    if (!readUTF8(dataOf(*from), units)) return errAECoercionFail;
    return writeText(units, toType, result);
}

OSErr textToUTF8(const AEDesc* from, DescType toType, AEDesc* result) {
    std::u16string units;
    if (const OSErr status = readText(from, units); status != noErr) return status;
    std::string bytes;
    writeUTF8(units, bytes);
    return makeDesc(toType, bytes, result);
}

}  // namespace osa
