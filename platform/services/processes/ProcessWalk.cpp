// GetNextProcess: a walk over the processes, from a list that each thread keeps for a moment.
#include <CoreServices/MacErrors.h>
#include <CoreServices/Processes.h>

#include <algorithm>
#include <chrono>
#include <new>
#include <tuple>

#include "platform/services/processes/ProcessNumbers.h"

namespace osa {
namespace {

using Clock = std::chrono::steady_clock;
using Processes = std::vector<posix::ProcessFacts>;

/// Reading all processes for each step would make a walk quadratic.
class ProcessList {
  public:
    Result<void> read() {
        OSA_TRY(processes_, posix::processes());
        readAt_ = Clock::now();
        return {};
    }
    /// Once a walk has ended it is of no use.
    void forget() { processes_ = {}; }
    bool isOld() const {
        return processes_.empty() || Clock::now() - readAt_ > std::chrono::seconds(1);
    }
    const Processes& processes() const { return processes_; }

  private:
    Processes processes_;
    Clock::time_point readAt_;
};

/// The moment of a number that nobody in the list has any more: its last turn of the high word.
std::uint64_t startOf(const ProcessSerialNumber& number, const Processes& list) {
    const std::uint64_t start = number.highLongOfPSN - 1;
    const std::uint64_t newest = list.empty() ? 0 : list.back().started;
    return start >= newest ? start : start + (newest - start) / kStartsTold * kStartsTold;
}

/// Where the processes begin that were started after the one of the number.
Processes::const_iterator after(const ProcessSerialNumber& number, const Processes& list) {
    const auto own =
        std::find_if(list.begin(), list.end(), [&](const posix::ProcessFacts& process) {
            return isSame(serialNumberOf(process), number);
        });
    if (own != list.end()) return own + 1;
    const auto place = std::pair(startOf(number, list), number.lowLongOfPSN);
    return std::find_if(list.begin(), list.end(), [&](const posix::ProcessFacts& process) {
        return std::pair(process.started, process.id) > place;
    });
}

bool isStillThere(const posix::ProcessFacts& process) {
    const auto now = posix::processFacts(process.id);
    return now.ok() && now->started == process.started;
}

Result<ProcessSerialNumber> nextProcess(ProcessSerialNumber number) {
    static thread_local ProcessList list;
    const bool isStart = isSame(number, {0, kNoProcess});
    if (isSame(number, {0, kCurrentProcess})) {
        OSA_TRY(const posix::ProcessFacts own, findProcess(number));
        number = serialNumberOf(own);
    }
    if (!isStart && (number.highLongOfPSN == 0 || number.lowLongOfPSN == 0)) {
        return Failure(procNotFound);
    }
    if (isStart || list.isOld()) {
        OSA_CHECK(list.read());
    }
    const Processes& processes = list.processes();
    const auto first = isStart ? processes.begin() : after(number, processes);
    const auto next = std::find_if(first, processes.end(), isStillThere);
    if (next != processes.end()) return serialNumberOf(*next);
    list.forget();
    return Failure(procNotFound);
}

}  // namespace
}  // namespace osa

OSErr GetNextProcess(ProcessSerialNumber* psn) {
    if (psn == nullptr) return paramErr;
    try {
        const auto next = osa::nextProcess(*psn);
        if (next.ok()) *psn = *next;
        if (next.status() == procNotFound) *psn = {0, kNoProcess};
        return static_cast<OSErr>(next.status());
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}
