// Descriptors as text for people.
#pragma once

#include <CoreServices/AEDataModel.h>

#ifdef __cplusplus
extern "C" {
#endif

/// A new handle with the descriptor in the customary notation, UTF-8, ended by a zero byte; the
/// caller disposes of it. Lists are [ ], records { key:value }, events class\id{ }, with an "&"
/// before an attribute's keyword; what has no notation of its own is 'type'($hexadecimal$).
/// Characters that could steer a terminal are written as escapes. Damaged parts are shown as bytes.
OSA_PLATFORM_EXPORT OSStatus AEPrintDescToHandle(const AEDesc* desc, Handle* result);

#ifdef __cplusplus
}
#endif
