// What an X server greets a client with.
#pragma once

#include <xcb/xcb.h>

#include <optional>

#include "platform/base/ByteReader.h"

namespace osa::desktop {

/// The bytes before those that a greeting's length counts.
inline constexpr std::size_t kGreetingHead = 8;

/// The root window of a screen. libxcb's own iterators trust the counts in the greeting.
std::optional<xcb_window_t> rootOf(ByteSpan greeting, int screen);

}  // namespace osa::desktop
