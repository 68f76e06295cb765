// XML property lists, as UTF-8 where that is valid and as Latin-1 elsewhere.
#include "fuzz/cf/CheckPropertyList.h"
#include "platform/text/TextConverter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const osa::ByteSpan bytes(reinterpret_cast<const std::byte*>(data), size);
    std::u16string text;
    if (!osa::decodeText(bytes, osa::kTextEncodingUTF8, text))
        osa::decodeText(bytes, osa::kTextEncodingISOLatin1, text);
    return osa::plist::fuzzPropertyList(
        [&](const osa::plist::Maker& maker) { return osa::plist::readXML(text, maker); });
}
