// Names of status values for messages.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <string>

namespace osa {

/// For people: "fnfErr (-43)", or the number alone when the value has no name here.
std::string describeStatus(OSStatus status);

}  // namespace osa
