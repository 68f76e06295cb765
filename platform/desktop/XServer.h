// A connection to an X server, and what its windows' properties say. Every answer is outside input:
// what is not of the form that was asked for is as if it were not there.
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace osa::desktop {

/// Calls wait for the server without limit, until somebody ends the connection.
class XServer {
  public:
    /// Null when there is no such display or it does not let us in.
    static std::unique_ptr<XServer> connect(const std::string& display);
    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;
    ~XServer() { xcb_disconnect(connection_); }

    int descriptor() const { return xcb_get_file_descriptor(connection_); }
    xcb_window_t root() const { return root_; }

    /// An atom for each name, in their order; XCB_ATOM_NONE for one that nobody has used yet.
    std::vector<xcb_atom_t> atoms(std::span<const std::string_view> names);
    /// A property of 32-bit values, cut off after 65,536.
    std::vector<std::uint32_t> values(xcb_window_t window, xcb_atom_t property, xcb_atom_t type);
    /// The first value of the same property of each window; 0 where there is none.
    std::vector<std::uint32_t> firstValues(std::span<const xcb_window_t> windows,
                                           xcb_atom_t property, xcb_atom_t type);
    /// A property of bytes, cut off after 1 KiB and before trailing zeros.
    std::string text(xcb_window_t window, xcb_atom_t property);
    /// The server's clock in milliseconds; 0 when it does not tell.
    xcb_timestamp_t time();
    /// Sends a client message about `window` to the root, for the window manager. Whether the
    /// server has taken it.
    bool tellManager(xcb_window_t window, xcb_atom_t message,
                     std::span<const std::uint32_t, 5> data);

  private:
    XServer(xcb_connection_t* connection, xcb_window_t root)
        : connection_(connection), root_(root) {}

    xcb_connection_t* const connection_;
    const xcb_window_t root_;
};

}  // namespace osa::desktop
