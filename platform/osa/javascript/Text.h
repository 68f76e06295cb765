// Text between the engine, descriptors and this room: UTF-16 throughout.
#pragma once

#include <CoreServices/AEDataModel.h>

#include <string>
#include <string_view>

#include "platform/osa/javascript/machine/Engine.h"

namespace osa::script {

/// Owns a descriptor.
struct Desc {
    Desc() = default;
    ~Desc() { AEDisposeDesc(&desc); }
    Desc(const Desc&) = delete;
    Desc& operator=(const Desc&) = delete;
    AEDesc* out() {
        AEDisposeDesc(&desc);
        return &desc;
    }
    /// Hands it over to `result`.
    void release(AEDesc* result) {
        *result = desc;
        AEInitializeDesc(&desc);
    }

    AEDesc desc{typeNull, nullptr};
};

/// Any text as UTF-16, by coercion. errAECoercionFail for what is no text.
OSErr textOf(const AEDesc& desc, std::u16string* text);
/// Text as a descriptor of the type asked for: typeUnicodeText for typeWildCard and typeBest.
OSErr answerText(std::u16string_view text, DescType type, AEDesc* result);
/// A code's four characters in Mac Roman.
std::u16string codeText(FourCharCode code);
/// The other way; false unless they are four characters of Mac Roman.
bool textCode(std::u16string_view text, FourCharCode* code);

/// Whether it may be part of a name or number of a script.
bool isWord(char16_t unit);
/// How many words and other characters a source has, but for blanks; those of comments count, too.
std::size_t countTokens(std::u16string_view source);

/// False with an exception pending.
bool toText(JSContext* cx, JS::HandleString string, std::u16string* text);
JSString* toString(JSContext* cx, std::u16string_view text);
std::u16string fromUtf8(JSContext* cx, const char* utf8);

}  // namespace osa::script
