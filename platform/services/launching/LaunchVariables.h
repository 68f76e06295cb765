// The variables in which a launcher tells what it has launched.
#pragma once

namespace osa {

/// The entry that was launched, and the number of the process that it was launched as.
inline constexpr char kEntryVariable[] = "GIO_LAUNCHED_DESKTOP_FILE";
inline constexpr char kEntryProcessVariable[] = "GIO_LAUNCHED_DESKTOP_FILE_PID";
/// The right to come to the front, in both of the desktop's ways.
inline constexpr char kStartupVariable[] = "DESKTOP_STARTUP_ID";
inline constexpr char kActivationVariable[] = "XDG_ACTIVATION_TOKEN";

}  // namespace osa
