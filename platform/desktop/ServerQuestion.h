// Asking the X server without ever waiting for it longer than a person would.
#pragma once

#include <cstdint>
#include <functional>

#include "platform/desktop/XServer.h"

namespace osa::desktop {

/// Asks the server of $DISPLAY, on a thread of its own. 0 when there is none, when it has not
/// answered after two seconds, after which nothing more is sent to it, and when a question that was
/// given up before is still waiting to be let in. What `question` uses must be its own. Safe on any
/// thread.
std::uint32_t askServer(std::function<std::uint32_t(XServer&)> question);

}  // namespace osa::desktop
