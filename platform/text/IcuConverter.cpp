// The one file that calls ICU's converters.
#include "platform/text/IcuConverter.h"

#include <unicode/uchar.h>
#include <unicode/ucnv.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "platform/text/Encodings.h"
#include "platform/text/TextConverter.h"

namespace osa {

namespace {

struct CloseConverter {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using ConverterPtr = std::unique_ptr<UConverter, CloseConverter>;

struct CachedConverter {
    UInt32 encoding;
    ConverterPtr converter;
    bool exchangesControls;
};

// Some of ICU's tables, those of the PC's code pages and of Shift-JIS, follow terminals on which
// three control characters had changed places. In texts they mean what they mean in ASCII.
constexpr std::u16string_view kControls = u"\x1A\x1C\x7F";
constexpr std::u16string_view kExchanged = u"\x1C\x7F\x1A";

void replaceUnits(std::u16string& units, std::size_t start, std::u16string_view from,
                  std::u16string_view to) {
    for (std::size_t i = start; i < units.size(); ++i) {
        const std::size_t place = from.find(units[i]);
        if (place != from.npos) units[i] = to[place];
    }
}

bool exchangesControls(UConverter* converter) {
    if (converter == nullptr) return false;
    UErrorCode error = U_ZERO_ERROR;
    char16_t unit = 0;
    return ucnv_toUChars(converter, &unit, 1, "\x7F", 1, &error) == 1 && unit == 0x1A;
}

ConverterPtr open(const char* name) {
    UErrorCode error = U_ZERO_ERROR;
    ConverterPtr converter(ucnv_open(name, &error));
    if (U_FAILURE(error)) return nullptr;
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                        &error);
    ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                          &error);
    return U_FAILURE(error) ? nullptr : std::move(converter);
}

/// One of the calling thread's converters, which live until the thread ends.
struct Converter {
    UConverter* icu = nullptr;  ///< null: there is none
    bool exchangesControls = false;
};

Converter converterFor(UInt32 encoding) {
    static thread_local std::vector<CachedConverter> cache;
    for (const CachedConverter& cached : cache)
        if (cached.encoding == encoding) return {cached.converter.get(), cached.exchangesControls};
    const char* const name = icuNameOfEncoding(encoding);
    if (name == nullptr) return {};
    ConverterPtr opened = open(name);
    const Converter converter{opened.get(), exchangesControls(opened.get())};
    cache.push_back({encoding, std::move(opened), converter.exchangesControls});
    return converter;
}

}  // namespace

bool decodeWithIcu(ByteSpan bytes, UInt32 cfEncoding, std::u16string& out) {
    const Converter converter = converterFor(cfEncoding);
    if (converter.icu == nullptr) return false;
    ucnv_resetToUnicode(converter.icu);
    const std::size_t start = out.size();
    const char* source = reinterpret_cast<const char*>(bytes.data());
    const char* const end = source + bytes.size();
    char16_t chunk[1024];
    UErrorCode error = U_BUFFER_OVERFLOW_ERROR;
    while (error == U_BUFFER_OVERFLOW_ERROR) {
        error = U_ZERO_ERROR;
        char16_t* target = chunk;
        ucnv_toUnicode(converter.icu, &target, std::end(chunk), &source, end, nullptr, true,
                       &error);
        out.append(chunk, target);
    }
    if (converter.exchangesControls) replaceUnits(out, start, kExchanged, kControls);
    return U_SUCCESS(error);
}

std::size_t encodeWithIcu(std::u16string_view units, UInt32 cfEncoding, UInt8 lossByte,
                          std::string& out) {
    const Converter converter = converterFor(cfEncoding);
    if (converter.icu == nullptr) return 0;
    ucnv_resetFromUnicode(converter.icu);
    std::u16string exchanged;
    if (converter.exchangesControls) {
        exchanged = units;
        replaceUnits(exchanged, 0, kControls, kExchanged);
        units = exchanged;
    }
    const char16_t* source = units.data();
    const char16_t* const end = source + units.size();
    char chunk[1024];
    for (;;) {
        UErrorCode error = U_ZERO_ERROR;
        char* target = chunk;
        ucnv_fromUnicode(converter.icu, &target, std::end(chunk), &source, end, nullptr, true,
                         &error);
        out.append(chunk, target);
        if (error == U_BUFFER_OVERFLOW_ERROR) continue;
        if (U_SUCCESS(error)) return units.size();
        if (lossByte == 0) {
            UErrorCode ignored = U_ZERO_ERROR;
            char16_t invalid[8];
            int8_t count = std::size(invalid);
            ucnv_getInvalidUChars(converter.icu, invalid, &count, &ignored);
            return static_cast<std::size_t>(source - units.data()) - static_cast<unsigned>(count);
        }
        out.push_back(static_cast<char>(lossByte));
        if (source == end) return units.size();
    }
}

std::size_t maximumBytesPerUnit(UInt32 cfEncoding) {
    switch (cfEncoding) {
        case kTextEncodingMacRoman:
        case kTextEncodingASCII:
        case kTextEncodingISOLatin1:
        case kTextEncodingNextStepLatin:
            return 1;
        case kTextEncodingUTF16:
        case kTextEncodingUTF16BE:
        case kTextEncodingUTF16LE:
            return 2;
        case kTextEncodingUTF8:
            return 3;
        case kTextEncodingUTF32:
        case kTextEncodingUTF32BE:
        case kTextEncodingUTF32LE:
            return 4;
        default:
            break;
    }
    UConverter* const converter = converterFor(cfEncoding).icu;
    return converter == nullptr ? 0 : static_cast<std::size_t>(ucnv_getMaxCharSize(converter));
}

char32_t foldCase(char32_t character) {
    return static_cast<char32_t>(u_foldCase(static_cast<UChar32>(character), U_FOLD_CASE_DEFAULT));
}

}  // namespace osa
