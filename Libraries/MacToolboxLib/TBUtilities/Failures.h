// How the support library fails: it throws the status, always as an OSStatus.
#pragma once

#include <CoreServices/MacTypes.h>

/// Throws `status` when it is not 0.
void FailOSErr(OSStatus status);
/// Throws the Resource Manager's last error when it is not 0.
void FailResError();
/// FailResError, but resNotFound passes: a missing resource is answered with null.
void FailResErrorX();
/// Throws memFullErr when `pointer` (a handle, a pointer or a Core Foundation reference) is null.
void FailNIL(const void* pointer);
