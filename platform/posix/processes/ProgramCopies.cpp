// From a copy of the caller to the program.
#include "platform/posix/processes/ProgramCopies.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>

namespace osa::posix {
namespace {

[[noreturn]] void reportAndEnd(int reports, Report::Kind kind, int value) {
    const Report report{kind, value};
    const ssize_t written = write(reports, &report, sizeof report);
    _exit(written == sizeof report ? 0 : 1);
}

void writeNumber(char* target, unsigned number) {
    char digits[kNumberRoom];
    std::size_t count = 0;
    do {
        digits[count++] = static_cast<char>('0' + number % 10);
        number /= 10;
    } while (number != 0);
    while (count > 0) *target++ = digits[--count];
}

/// A handler falls back to the default by itself when the program runs; being ignored does not.
void resetSignals() {
    struct sigaction byDefault {};
    byDefault.sa_handler = SIG_DFL;
    for (int number = 1; number < NSIG; ++number) sigaction(number, &byDefault, nullptr);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

/// The report's descriptor is among those closed only when the program runs.
void keepDescriptorsFromProgram(std::uint64_t limit) {
    if (close_range(kFirstFreeDescriptor, ~0U, CLOSE_RANGE_CLOEXEC) == 0) return;
    for (int each = kFirstFreeDescriptor; static_cast<std::uint64_t>(each) < limit; ++each) {
        fcntl(each, F_SETFD, FD_CLOEXEC);
    }
}

[[noreturn]] void becomeProgram(const Preparation& preparation) {
    setsid();
    for (int stream = 0; stream < kFirstFreeDescriptor; ++stream) {
        if (dup2(preparation.null.get(), stream) < 0) {
            reportAndEnd(preparation.reports.get(), Report::Kind::failure, errno);
        }
    }
    keepDescriptorsFromProgram(preparation.descriptorLimit);
    const bool isThere = preparation.folder[0] != '\0' && chdir(preparation.folder) == 0;
    if (!isThere && chdir("/") != 0) {
        reportAndEnd(preparation.reports.get(), Report::Kind::failure, errno);
    }
    if (preparation.ownNumber != nullptr) {
        writeNumber(preparation.ownNumber, static_cast<unsigned>(getpid()));
    }
    resetSignals();
    execve(preparation.program, preparation.argumentPointers, preparation.environmentPointers);
    reportAndEnd(preparation.reports.get(), Report::Kind::failure, errno);
}

}  // namespace

void makeOrphan(const Preparation& preparation) {
    const pid_t program = _Fork();
    if (program == 0) becomeProgram(preparation);
    if (program > 0) reportAndEnd(preparation.reports.get(), Report::Kind::number, program);
    reportAndEnd(preparation.reports.get(), Report::Kind::failure, errno);
}

}  // namespace osa::posix
