// Any bytes as an X server's greeting: no screen beyond them is found.
#include <cstdlib>

#include "platform/desktop/Greeting.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const osa::ByteSpan bytes(reinterpret_cast<const std::byte*>(data), size);
    for (const int screen : {-1, 0, 1, 255}) {
        const bool isFound = osa::desktop::rootOf(bytes, screen).has_value();
        if (isFound && size < sizeof(xcb_setup_t) + sizeof(xcb_screen_t)) std::abort();
    }
    return 0;
}
