// The per-thread fault counter and the published functions that set it.
#include "platform/base/FaultPoint.h"

#include <OSA/Diagnostics.h>

namespace osa {
namespace {

struct FaultState {
    UInt32 failing = 0;  // the operation that fails, counted from 1; 0 when faults are off
    UInt32 passed = 0;
    UInt32 failed = 0;
    bool fromThenOn = false;
};

thread_local FaultState faults;

}  // namespace

bool faultPoint() {
    if (faults.failing == 0) return false;
    const UInt32 number = ++faults.passed;
    if (number < faults.failing || (number > faults.failing && !faults.fromThenOn)) return false;
    ++faults.failed;
    return true;
}

}  // namespace osa

void OSAFailOperation(UInt32 nth, Boolean fromThenOn) {
    osa::faults = {.failing = nth, .passed = 0, .failed = 0, .fromThenOn = fromThenOn != 0};
}

UInt32 OSAFailedOperations(void) {
    return osa::faults.failed;
}
