// Walks through a greeting to the screens.
#include "platform/desktop/Greeting.h"

#include <cstring>

namespace osa::desktop {
namespace {

/// A structure of the protocol, in the order of bytes that libxcb has agreed with the server.
template <typename T>
T readStructure(ByteReader& in) {
    T structure{};
    const ByteSpan bytes = in.bytes(sizeof structure);
    if (!bytes.empty()) std::memcpy(&structure, bytes.data(), bytes.size());
    return structure;
}

}  // namespace

std::optional<xcb_window_t> rootOf(ByteSpan bytes, int screen) {
    ByteReader in(bytes);
    const auto greeting = readStructure<xcb_setup_t>(in);
    in.skip((std::size_t{greeting.vendor_len} + 3) / 4 * 4);
    in.skip(std::size_t{greeting.pixmap_formats_len} * sizeof(xcb_format_t));
    if (screen < 0 || screen >= greeting.roots_len) return std::nullopt;
    for (int index = 0; in.ok(); ++index) {
        const auto each = readStructure<xcb_screen_t>(in);
        if (index == screen) return in.ok() ? std::optional(each.root) : std::nullopt;
        for (int left = each.allowed_depths_len; left > 0; --left) {
            const auto depth = readStructure<xcb_depth_t>(in);
            in.skip(std::size_t{depth.visuals_len} * sizeof(xcb_visualtype_t));
        }
    }
    return std::nullopt;
}

}  // namespace osa::desktop
