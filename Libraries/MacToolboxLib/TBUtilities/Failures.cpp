// The only place that throws a status.
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"

#include <CoreServices/MacErrors.h>
#include <CoreServices/Resources.h>

void FailOSErr(OSStatus status) {
    if (status != noErr) throw status;
}

void FailResError() {
    FailOSErr(ResError());
}

void FailResErrorX() {
    const OSStatus status = ResError();
    if (status != resNotFound) FailOSErr(status);
}

void FailNIL(const void* pointer) {
    if (pointer == nullptr) FailOSErr(memFullErr);
}
