// Descriptors as text for people.
#pragma once

#include <CoreServices/AEDataModel.h>

#ifdef __cplusplus
extern "C" {
#endif

/// A new handle with the descriptor in the customary notation, UTF-8, ended by a zero byte; the
/// caller disposes of it. Lists are [ ], records { key:value }, events class\id{ }, with an "&"
/// before an attribute's keyword; what has no notation of its own is 'type'($hexadecimal$).
/// Characters that could steer a terminal are written as escapes, malformed text as U+FFFD. Damaged
/// parts are shown as bytes. All of it is on one line, at any depth; of one value's data 65,536
/// bytes are shown, and "…" for the rest. memFullErr when the text exceeds 2 GiB.
OSA_PLATFORM_EXPORT OSStatus AEPrintDescToHandle(const AEDesc* desc, Handle* result);

#ifdef __cplusplus
}
#endif
