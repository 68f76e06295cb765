// The desktop that the user sits at, as far as it tells of windows and takes requests: an X11 one
// (also the X11 side of a Wayland one) whose window manager keeps to the Extended Window Manager
// Hints. Each question makes its own connection to $DISPLAY.
#pragma once

#include <cstdint>

#include "platform/base/Result.h"

namespace osa::desktop {

/// The process on this machine whose window is the active one; procNotFound when there is no
/// desktop, none active, or its process is not told.
Result<std::uint32_t> frontProcess();
/// Asks the window manager to activate the process's topmost window. kCannotSetFrontProcessErr when
/// there is no desktop, it cannot be asked, or the process has no window.
Result<void> bringToFront(std::uint32_t processID);

}  // namespace osa::desktop
