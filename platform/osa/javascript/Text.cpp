// Text between the engine, descriptors and this room.
#include "platform/osa/javascript/Text.h"

#include <CoreServices/MacErrors.h>

namespace osa::script {
namespace {

OSErr bytesOf(const AEDesc& desc, void* bytes, std::size_t size) {
    return AEGetDescData(&desc, bytes, static_cast<Size>(size));
}

}  // namespace

OSErr textOf(const AEDesc& desc, std::u16string* text) {
    Desc unicode;
    const OSErr status = AECoerceDesc(&desc, typeUnicodeText, unicode.out());
    if (status != noErr) return status;
    text->resize(static_cast<std::size_t>(AEGetDescDataSize(&unicode.desc)) / sizeof(char16_t));
    return bytesOf(unicode.desc, text->data(), text->size() * sizeof(char16_t));
}

OSErr answerText(std::u16string_view text, DescType type, AEDesc* result) {
    const std::size_t size = text.size() * sizeof(char16_t);
    if (size > 0x7FFFFFFF) return memFullErr;
    if (type == typeWildCard || type == typeBest || type == typeUnicodeText)
        return AECreateDesc(typeUnicodeText, text.data(), static_cast<Size>(size), result);
    return AECoercePtr(typeUnicodeText, text.data(), static_cast<Size>(size), type, result);
}

std::u16string codeText(FourCharCode code) {
    const char bytes[] = {static_cast<char>(code >> 24), static_cast<char>(code >> 16),
                          static_cast<char>(code >> 8), static_cast<char>(code)};
    Desc text;
    std::u16string characters;
    if (AECreateDesc(typeChar, bytes, sizeof bytes, text.out()) == noErr)
        textOf(text.desc, &characters);
    return characters;
}

bool textCode(std::u16string_view text, FourCharCode* code) {
    if (text.size() != 4) return false;
    Desc bytes;
    unsigned char characters[4];
    if (answerText(text, typeChar, bytes.out()) != noErr ||
        AEGetDescDataSize(&bytes.desc) != sizeof characters ||
        bytesOf(bytes.desc, characters, sizeof characters) != noErr)
        return false;
    *code = 0;
    for (const unsigned char byte : characters) *code = *code << 8 | byte;
    // What has no equal in Mac Roman became a question mark.
    return codeText(*code) == text;
}

bool isWord(char16_t unit) {
    return unit == u'_' || unit == u'$' || unit >= 0x80 || (unit >= u'0' && unit <= u'9') ||
           (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
}

std::size_t countTokens(std::u16string_view source) {
    std::size_t count = 0;
    bool inWord = false;
    for (const char16_t unit : source) {
        const bool isPart = isWord(unit);
        if (unit > u' ' && !(isPart && inWord)) ++count;
        inWord = isPart;
    }
    return count;
}

bool toText(JSContext* cx, JS::HandleString string, std::u16string* text) {
    text->resize(JS_GetStringLength(string));
    return JS_CopyStringChars(cx, mozilla::Range<char16_t>(text->data(), text->size()), string);
}

JSString* toString(JSContext* cx, std::u16string_view text) {
    return JS_NewUCStringCopyN(cx, text.data(), text.size());
}

std::u16string fromUtf8(JSContext* cx, const char* utf8) {
    std::u16string text;
    if (utf8 == nullptr) return text;
    JS::RootedString string(
        cx,
        JS_NewStringCopyUTF8Z(cx, JS::ConstUTF8CharsZ(utf8, std::char_traits<char>::length(utf8))));
    if (string == nullptr || !toText(cx, string, &text)) JS_ClearPendingException(cx);
    return text;
}

}  // namespace osa::script
