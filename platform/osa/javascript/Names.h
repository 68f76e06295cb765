// Names of handlers and properties as callers give them.
#pragma once

#include <CoreServices/AEDataModel.h>

#include <string>

namespace osa::script {

struct Name {
    std::u16string text;   ///< of a global function or property, may be empty
    std::u16string event;  ///< eight characters, when an event was asked for
};

/// An event's name: the global function for it, if it has a standard one, and its key in `on`.
Name eventName(AEEventClass eventClass, AEEventID eventID);
/// From text or, when `mayBeEvent`, 'evnt'. paramErr for text that is no identifier, unless it is
/// put between bars, which are taken off; errAECoercionFail for what is no text.
OSErr nameOf(const AEDesc& desc, bool mayBeEvent, Name* name);
/// The same without asking for an identifier.
OSErr plainNameOf(const AEDesc& desc, Name* name);

}  // namespace osa::script
