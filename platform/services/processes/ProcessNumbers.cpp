// Serial numbers made of a process's start and number, and back.
#include "platform/services/processes/ProcessNumbers.h"

#include <CoreServices/MacErrors.h>

#include "platform/posix/FileSystem.h"

namespace osa {

ProcessSerialNumber serialNumberOf(const posix::ProcessFacts& facts) {
    return {static_cast<UInt32>(1 + facts.started % kStartsTold), facts.id};
}

Result<ProcessSerialNumber> serialNumberOf(std::uint32_t processID) {
    OSA_TRY(const posix::ProcessFacts facts, posix::processFacts(processID));
    return serialNumberOf(facts);
}

Result<posix::ProcessFacts> findProcess(const ProcessSerialNumber& number) {
    if (isSame(number, {0, kCurrentProcess})) return posix::processFacts(posix::processID());
    if (number.highLongOfPSN == 0) return Failure(procNotFound);
    OSA_TRY(const posix::ProcessFacts facts, posix::processFacts(number.lowLongOfPSN));
    if (!isSame(serialNumberOf(facts), number)) return Failure(procNotFound);
    return facts;
}

Result<void> checkStillThere(const posix::ProcessFacts& facts) {
    OSA_CHECK(findProcess(serialNumberOf(facts)));
    return {};
}

}  // namespace osa
