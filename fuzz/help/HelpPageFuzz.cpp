// Any bytes as a help page: what it says is UTF-8, and not much more than the bytes.
#include <cstdlib>

#include "platform/services/help/HelpPage.h"
#include "platform/text/TextConverter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const osa::ByteSpan bytes(reinterpret_cast<const std::byte*>(data), size);
    const osa::HelpPage page = osa::readHelpPage(bytes);
    std::u16string units;
    if (page.text.size() > 6 * size || page.title.size() > 512) std::abort();
    if (!osa::utf16FromUTF8(page.text, units) || !osa::utf16FromUTF8(page.title, units))
        std::abort();
    for (const std::string& anchor : page.anchors)
        if (anchor.empty() || !osa::utf16FromUTF8(anchor, units)) std::abort();
    return 0;
}
