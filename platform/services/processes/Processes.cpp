// The calls that name processes and tell of them.
#include <CoreServices/Processes.h>

#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <new>

#include "platform/files/References.h"
#include "platform/services/processes/ProcessApplication.h"
#include "platform/services/processes/ProcessNumbers.h"

namespace osa {
namespace {

/// Sixtieths of a second, of which as many are kept as a word holds.
UInt32 ticks(std::uint64_t hundredths) {
    return static_cast<UInt32>(hundredths * 3 / 5);
}

Result<bool> areSame(ProcessSerialNumber first, ProcessSerialNumber second) {
    for (ProcessSerialNumber* const each : {&first, &second}) {
        if (!isSame(*each, {0, kCurrentProcess})) continue;
        OSA_TRY(const posix::ProcessFacts own, findProcess(*each));
        *each = serialNumberOf(own);
    }
    return isSame(first, second);
}

Result<ProcessInfoRec> informationOf(const ProcessSerialNumber& number) {
    OSA_TRY(const posix::ProcessFacts process, findProcess(number));
    ProcessInfoRec info{};
    info.processInfoLength = sizeof info;
    info.processNumber = serialNumberOf(process);
    const auto application = applicationOf(process);
    if (!application.ok() && application.status() != fnfErr) return Failure(application.status());
    const Application known = application.ok() ? *application : Application();
    info.processType = known.type;
    info.processSignature = known.signature;
    info.processMode = known.isBackgroundOnly ? modeOnlyBackground : 0;
    info.processSize =
        static_cast<UInt32>(std::min<std::uint64_t>(process.residentBytes, 0xFFFFFFFF));
    const auto launcher = serialNumberOf(process.parent);
    info.processLauncher = launcher.ok() ? *launcher : ProcessSerialNumber{0, kNoProcess};
    info.processLaunchDate = ticks(process.started);
    info.processActiveTime = ticks(process.processorTime);
    OSA_CHECK(checkStillThere(process));
    return info;
}

Result<FSRef> locationOf(const ProcessSerialNumber& number) {
    OSA_TRY(const posix::ProcessFacts process, findProcess(number));
    OSA_TRY(const Application application, applicationOf(process));
    OSA_CHECK(checkStillThere(process));
    return referenceToPath(application.path, nullptr);
}

/// Nothing is thrown into the caller's code.
template <typename Work>
OSStatus guarded(Work work) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}

/// The value goes to `target`, the status to the caller.
template <typename Value, typename Target>
OSStatus deliver(const Result<Value>& result, Target& target) {
    if (result.ok()) target = *result;
    return result.status();
}

}  // namespace
}  // namespace osa

OSErr GetCurrentProcess(ProcessSerialNumber* psn) {
    if (psn == nullptr) return paramErr;
    return static_cast<OSErr>(osa::guarded(
        [&] { return osa::deliver(osa::serialNumberOf(osa::posix::processID()), *psn); }));
}

OSErr SameProcess(const ProcessSerialNumber* first, const ProcessSerialNumber* second,
                  Boolean* result) {
    if (first == nullptr || second == nullptr || result == nullptr) return paramErr;
    return static_cast<OSErr>(
        osa::guarded([&] { return osa::deliver(osa::areSame(*first, *second), *result); }));
}

OSErr GetProcessInformation(const ProcessSerialNumber* psn, ProcessInfoRec* info) {
    if (psn == nullptr || info == nullptr || info->processInfoLength != sizeof *info ||
        info->processName != 0 || info->processAppSpec != 0)
        return paramErr;
    return static_cast<OSErr>(
        osa::guarded([&] { return osa::deliver(osa::informationOf(*psn), *info); }));
}

OSStatus GetProcessBundleLocation(const ProcessSerialNumber* psn, FSRef* location) {
    if (psn == nullptr || location == nullptr) return paramErr;
    return osa::guarded([&] { return osa::deliver(osa::locationOf(*psn), *location); });
}
