// Applications told from the bundle or the entry that they are.
#pragma once

#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFRef.h>

#include <optional>
#include <string>

#include "platform/services/applications/Application.h"
#include "platform/services/applications/DesktopEntry.h"

namespace osa {

inline constexpr OSType kApplicationType = FourCC("APPL");
inline constexpr OSType kUnknownSignature = FourCC("????");

/// Null when the folder is no bundle.
CFRef<CFBundleRef> bundleAt(const std::string& path);
/// Whatever type of bundle it is.
Application describeBundle(CFBundleRef bundle, const std::string& path);
/// None for bundles of other types.
std::optional<Application> applicationOfBundle(CFBundleRef bundle, const std::string& path);
/// None for entries of other types.
std::optional<Application> applicationOfEntry(const DesktopEntry& entry, const std::string& path,
                                              std::string identifier);

}  // namespace osa
