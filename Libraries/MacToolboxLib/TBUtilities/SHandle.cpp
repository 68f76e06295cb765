// Giving handles back.
#include "Libraries/MacToolboxLib/TBUtilities/SHandle.h"

#include <CoreServices/Resources.h>

void DisposeAHandle(Handle handle) {
    if (handle == nullptr) return;
    if ((HGetState(handle) & kHandleResourceMask) != 0) {
        ReleaseResource(handle);
    } else {
        DisposeHandle(handle);
    }
}
