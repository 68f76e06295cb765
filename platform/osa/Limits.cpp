// What a call into a script may take, and where scripts write, for the whole process.
#include <OSA/ScriptingComponents.h>

#include <mutex>

namespace osa {
namespace {

struct Shared {
    std::mutex lock;
    OSALimits limits{10'000, UInt32{256} << 20};
    OSALogProcPtr logProc = nullptr;
    void* logRefCon = nullptr;
};

Shared& shared() {
    static constinit Shared settings;
    return settings;
}

}  // namespace
}  // namespace osa

void OSASetLimits(const OSALimits* limits) {
    if (limits == nullptr) return;
    osa::Shared& shared = osa::shared();
    const std::scoped_lock guard(shared.lock);
    shared.limits = *limits;
}

void OSAGetLimits(OSALimits* limits) {
    if (limits == nullptr) return;
    osa::Shared& shared = osa::shared();
    const std::scoped_lock guard(shared.lock);
    *limits = shared.limits;
}

void OSASetLogProc(OSALogProcPtr logProc, void* refCon) {
    osa::Shared& shared = osa::shared();
    const std::scoped_lock guard(shared.lock);
    shared.logProc = logProc;
    shared.logRefCon = refCon;
}

void OSAGetLogProc(OSALogProcPtr* logProc, void** refCon) {
    osa::Shared& shared = osa::shared();
    const std::scoped_lock guard(shared.lock);
    if (logProc != nullptr) *logProc = shared.logProc;
    if (refCon != nullptr) *refCon = shared.logRefCon;
}
