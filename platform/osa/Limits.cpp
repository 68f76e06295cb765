// What a call into a script may take, for all instances that are opened.
#include <OSA/ScriptingComponents.h>

#include <mutex>

namespace osa {
namespace {

struct SharedLimits {
    std::mutex lock;
    OSALimits limits{10'000, UInt32{256} << 20};
};

SharedLimits& shared() {
    static constinit SharedLimits limits;
    return limits;
}

}  // namespace
}  // namespace osa

void OSASetLimits(const OSALimits* limits) {
    if (limits == nullptr) return;
    osa::SharedLimits& shared = osa::shared();
    const std::scoped_lock guard(shared.lock);
    shared.limits = *limits;
}

void OSAGetLimits(OSALimits* limits) {
    if (limits == nullptr) return;
    osa::SharedLimits& shared = osa::shared();
    const std::scoped_lock guard(shared.lock);
    *limits = shared.limits;
}
