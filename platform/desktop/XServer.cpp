// The few requests of the X protocol that are needed, over libxcb.
#include "platform/desktop/XServer.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <optional>

#include "platform/desktop/Greeting.h"

namespace osa::desktop {
namespace {

constexpr std::uint32_t kMostValues = 65536;
constexpr std::uint32_t kMostTextWords = 256;
/// Requests that are sent before their answers are read: few enough to fit into any socket's
/// buffer, enough to make little of the way to a server far away.
constexpr std::size_t kBatch = 32;

struct Freed {
    void operator()(void* block) const { std::free(block); }
};
template <typename T>
using Owned = std::unique_ptr<T, Freed>;

/// The property's bytes when they are of the type (any, for XCB_ATOM_ANY) and unit asked for.
ByteSpan contentOf(const xcb_get_property_reply_t* reply, xcb_atom_t type, int unitBits) {
    if (reply == nullptr || reply->format != unitBits) return {};
    if (type != XCB_ATOM_ANY && reply->type != type) return {};
    const std::uint64_t length = std::uint64_t{reply->value_len} * (reply->format / 8);
    if (length > std::uint64_t{reply->length} * 4) return {};
    return {static_cast<const std::byte*>(xcb_get_property_value(reply)),
            static_cast<std::size_t>(length)};
}

}  // namespace

std::unique_ptr<XServer> XServer::connect(const std::string& display) {
    int screen = 0;
    xcb_connection_t* const connection = xcb_connect(display.c_str(), &screen);
    const xcb_setup_t* const setup = xcb_get_setup(connection);
    const auto root = xcb_connection_has_error(connection) == 0 && setup != nullptr
                          ? rootOf({reinterpret_cast<const std::byte*>(setup),
                                    kGreetingHead + std::size_t{setup->length} * 4},
                                   screen)
                          : std::nullopt;
    if (root) return std::unique_ptr<XServer>(new XServer(connection, *root));
    xcb_disconnect(connection);
    return nullptr;
}

std::vector<xcb_atom_t> XServer::atoms(std::span<const std::string_view> names) {
    std::vector<xcb_intern_atom_cookie_t> asked;
    asked.reserve(names.size());
    for (const std::string_view name : names) {
        const auto length = static_cast<std::uint16_t>(name.size());
        asked.push_back(xcb_intern_atom(connection_, 1, length, name.data()));
    }
    std::vector<xcb_atom_t> found;
    found.reserve(names.size());
    for (const auto& cookie : asked) {
        const Owned<xcb_intern_atom_reply_t> reply(
            xcb_intern_atom_reply(connection_, cookie, nullptr));
        found.push_back(reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE});
    }
    return found;
}

std::vector<std::uint32_t> XServer::values(xcb_window_t window, xcb_atom_t property,
                                           xcb_atom_t type) {
    const Owned<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        connection_, xcb_get_property(connection_, 0, window, property, type, 0, kMostValues),
        nullptr));
    const ByteSpan content = contentOf(reply.get(), type, 32);
    std::vector<std::uint32_t> found(
        std::min<std::size_t>(content.size() / sizeof(std::uint32_t), kMostValues));
    if (!found.empty()) {
        std::memcpy(found.data(), content.data(), found.size() * sizeof found.front());
    }
    return found;
}

std::vector<std::uint32_t> XServer::firstValues(std::span<const xcb_window_t> windows,
                                                xcb_atom_t property, xcb_atom_t type) {
    std::vector<std::uint32_t> found;
    found.reserve(windows.size());
    std::vector<xcb_get_property_cookie_t> asked;
    asked.reserve(kBatch);
    while (!windows.empty() && xcb_connection_has_error(connection_) == 0) {
        const auto batch = windows.first(std::min(kBatch, windows.size()));
        windows = windows.subspan(batch.size());
        asked.clear();
        for (const xcb_window_t window : batch)
            asked.push_back(xcb_get_property(connection_, 0, window, property, type, 0, 1));
        for (const auto& cookie : asked) {
            const Owned<xcb_get_property_reply_t> reply(
                xcb_get_property_reply(connection_, cookie, nullptr));
            const ByteSpan content = contentOf(reply.get(), type, 32);
            std::uint32_t value = 0;
            if (content.size() >= sizeof value) {
                std::memcpy(&value, content.data(), sizeof value);
            }
            found.push_back(value);
        }
    }
    found.resize(found.size() + windows.size());
    return found;
}

std::string XServer::text(xcb_window_t window, xcb_atom_t property) {
    const auto cookie =
        xcb_get_property(connection_, 0, window, property, XCB_ATOM_ANY, 0, kMostTextWords);
    const Owned<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(connection_, cookie, nullptr));
    std::string found(asText(contentOf(reply.get(), XCB_ATOM_ANY, 8)));
    found.erase(found.find_last_not_of('\0') + 1);
    return found;
}

/// Nothing asks for the time alone: it comes with the news that a property, here of a window of our
/// own that is never shown, has changed. The window goes with the connection.
xcb_timestamp_t XServer::time() {
    const xcb_window_t window = xcb_generate_id(connection_);
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(connection_, 0, window, root_, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    const auto change =
        xcb_change_property_checked(connection_, XCB_PROP_MODE_APPEND, window, XCB_ATOM_WM_NAME,
                                    XCB_ATOM_STRING, 8, 0, nullptr);
    const Owned<xcb_generic_error_t> error(xcb_request_check(connection_, change));
    if (error) return 0;
    while (const Owned<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
        if ((event->response_type & 0x7F) != XCB_PROPERTY_NOTIFY) continue;
        return reinterpret_cast<const xcb_property_notify_event_t*>(event.get())->time;
    }
    return 0;
}

bool XServer::tellManager(xcb_window_t window, xcb_atom_t message,
                          std::span<const std::uint32_t, 5> data) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = message;
    std::copy(data.begin(), data.end(), event.data.data32);
    const auto sent = xcb_send_event_checked(
        connection_, 0, root_,
        XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
        reinterpret_cast<const char*>(&event));
    const Owned<xcb_generic_error_t> error(xcb_request_check(connection_, sent));
    return !error && xcb_connection_has_error(connection_) == 0;
}

}  // namespace osa::desktop
