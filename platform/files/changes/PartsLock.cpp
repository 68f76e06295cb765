// The locks and the counter.
#include "platform/files/changes/PartsLock.h"

#include <algorithm>
#include <atomic>

namespace osa {
namespace {

std::mutex turnLock;    // one change after the other, while the next waits for other processes
std::mutex changeLock;  // one is under way
std::atomic<std::uint64_t> changes{0};
thread_local bool isHeld = false;

}  // namespace

PartsLock::PartsLock(std::string_view folder, std::string_view other) : turn_(turnLock) {
    // In one order everywhere, or two would wait for each other.
    first_.emplace(std::string(other.empty() ? folder : std::min(folder, other)));
    if (!other.empty() && other != folder) second_.emplace(std::string(std::max(folder, other)));
    change_ = std::unique_lock(changeLock);
    isHeld = true;
    ++changes;
}

PartsLock::~PartsLock() {
    ++changes;
    isHeld = false;
}

PartsPause::PartsPause() : change_(changeLock) {
    isHeld = true;
}

PartsPause::~PartsPause() {
    isHeld = false;
}

std::uint64_t partChanges() {
    return changes;
}

bool isSteadySince(std::uint64_t count) {
    return isHeld || (count % 2 == 0 && count == changes);
}

}  // namespace osa
