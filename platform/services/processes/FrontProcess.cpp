// The process that has the keyboard, and giving it to another: the desktop's part of the Process
// Manager.
#include <CoreServices/MacErrors.h>
#include <CoreServices/Processes.h>

#include <new>

#include "platform/desktop/Desktop.h"
#include "platform/services/processes/ProcessNumbers.h"

namespace osa {
namespace {

Result<ProcessSerialNumber> frontNumber() {
    OSA_TRY(const std::uint32_t id, desktop::frontProcess());
    return serialNumberOf(id);
}

Result<void> makeFront(const ProcessSerialNumber& number) {
    OSA_TRY(const posix::ProcessFacts process, findProcess(number));
    return desktop::bringToFront(process.id);
}

/// What every published call here does with what the rooms below answer.
template <typename Work>
OSErr statusOf(Work work) {
    try {
        return static_cast<OSErr>(work().status());
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}

}  // namespace
}  // namespace osa

OSErr GetFrontProcess(ProcessSerialNumber* psn) {
    if (psn == nullptr) return paramErr;
    *psn = {0, kNoProcess};
    return osa::statusOf([&] {
        auto front = osa::frontNumber();
        if (front.ok()) *psn = *front;
        return front;
    });
}

OSErr SetFrontProcess(const ProcessSerialNumber* psn) {
    if (psn == nullptr) return paramErr;
    return osa::statusOf([&] { return osa::makeFront(*psn); });
}

OSErr WakeUpProcess(const ProcessSerialNumber* psn) {
    if (psn == nullptr) return paramErr;
    return osa::statusOf([&] { return osa::findProcess(*psn); });
}
