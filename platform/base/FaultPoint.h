// The per-thread fault counter behind OSAFailOperation: where fallible operations ask whether to
// fail.
#pragma once

namespace osa {

/// Counts one fallible operation of the calling thread and says whether it shall be made to fail.
/// The caller then behaves exactly as if the system had refused: EIO for system calls, memFullErr
/// for allocations. Costs one thread-local test while no fault is set.
bool faultPoint();

}  // namespace osa
