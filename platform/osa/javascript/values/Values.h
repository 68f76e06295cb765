// Values of scripts and descriptors, one from the other. docs/javascript-component.md has the
// table.
#pragma once

#include <CoreServices/AEDataModel.h>

#include "platform/osa/javascript/Host.h"

namespace osa::script {

/// How far lists and records may nest.
constexpr int kDeepest = 100;
/// Seconds from 1904 to 1970.
constexpr double kEpoch = 2082844800.0;

// In the realm that is entered. errOSAScriptError: the engine failed, an exception is pending
// unless it was stopped.

/// Lists and records nested deeper than that: errAECoercionFail.
OSErr fromDesc(Host& host, const AEDesc& desc, JS::MutableHandleValue value);
/// The value's natural descriptor. errAECoercionFail for what has none: functions, symbols,
/// collections, proxies, objects that hold themselves or nest deeper, more than a million
/// values.
OSErr toDesc(Host& host, JS::HandleValue value, AEDesc* desc);
/// The type that toDesc would give, without making it.
DescType naturalType(JSContext* cx, JS::HandleValue value);

}  // namespace osa::script
