// Process serial numbers: the moment a process was started, and its number.
#pragma once

#include <CoreServices/Processes.h>

#include <cstdint>

#include "platform/base/Result.h"
#include "platform/posix/processes/Processes.h"

namespace osa {

/// How many starts the high word tells apart: 497 days of them.
inline constexpr std::uint64_t kStartsTold = 0xFFFFFFFF;

inline bool isSame(const ProcessSerialNumber& first, const ProcessSerialNumber& second) {
    return first.highLongOfPSN == second.highLongOfPSN && first.lowLongOfPSN == second.lowLongOfPSN;
}

/// The high word is never 0, which is for the numbers that only stand for a process.
ProcessSerialNumber serialNumberOf(const posix::ProcessFacts& facts);
/// Of one of the user's processes that runs a program file; procNotFound.
Result<ProcessSerialNumber> serialNumberOf(std::uint32_t processID);
/// procNotFound when the process is gone, even if another one has its number by now. To be asked
/// after anything was read that goes by the number.
Result<void> checkStillThere(const posix::ProcessFacts& facts);
/// The process of a serial number, kCurrentProcess included; procNotFound when it is gone.
Result<posix::ProcessFacts> findProcess(const ProcessSerialNumber& number);

}  // namespace osa
