// Asking the X server without ever waiting for it longer than a person would.
#pragma once

#include <cstdint>
#include <functional>

#include "platform/desktop/XServer.h"

namespace osa::desktop {

/// Asks the server of $DISPLAY, on a thread of its own. 0 when there is none, when it has not
/// answered after two seconds, and when a question before is still waiting to be let in by it.
/// After that nothing more is sent to it. What `question` uses must be its own.
std::uint32_t askServer(std::function<std::uint32_t(XServer&)> question);

}  // namespace osa::desktop
