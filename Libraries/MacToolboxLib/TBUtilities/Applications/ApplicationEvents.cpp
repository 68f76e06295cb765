// Modifier keys, and an event's required parameters.
#include <CoreServices/Events.h>
#include <CoreServices/MacErrors.h>

#include "Libraries/MacToolboxLib/TBUtilities/Applications/Applications.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"

namespace {

bool IsKeyDown(UInt32 modifier) {
    return (GetCurrentEventKeyModifiers() & modifier) != 0;
}

}  // namespace

bool IsCommandDown() {
    return IsKeyDown(cmdKey);
}

bool IsShiftDown() {
    return IsKeyDown(shiftKey);
}

bool IsOptionDown() {
    return IsKeyDown(optionKey);
}

bool IsControlDown() {
    return IsKeyDown(controlKey);
}

void CheckForRequiredParams(const CAEDescReader& event) {
    DescType type = 0;
    Size size = 0;
    const OSErr status = AEGetAttributePtr(&event.GetDesc(), keyMissedKeywordAttr, typeWildCard,
                                           &type, nullptr, 0, &size);
    if (status == noErr) FailOSErr(errAEParamMissed);
    if (status != errAEDescNotFound) FailOSErr(status);
}
