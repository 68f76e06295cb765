// Starting programs: two forks, so that the program is nobody's child here, and a pipe on which it
// tells how it went.
#include "platform/posix/processes/ProgramStart.h"

#include <CoreServices/MacErrors.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/auxv.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "platform/posix/FileSystem.h"
#include "platform/posix/PosixSupport.h"
#include "platform/posix/SystemCall.h"
#include "platform/posix/processes/ProgramCopies.h"
#include "platform/posix/processes/SignalsBlocked.h"

namespace osa::posix {
namespace {

bool isName(const std::string& variable) {
    return !variable.empty() && isUsablePath(variable) && variable.find('=') == std::string::npos;
}

bool isUsable(const ProgramStart& start) {
    const auto isVariable = [](const auto& each) {
        return isName(each.first) && isUsablePath(each.second);
    };
    return isUsablePath(start.program) && start.program.starts_with('/') &&
           isUsablePath(start.folder) && !start.arguments.empty() &&
           std::all_of(start.arguments.begin(), start.arguments.end(), isUsablePath) &&
           std::all_of(start.variables.begin(), start.variables.end(), isVariable) &&
           (start.ownNumberVariable.empty() || isName(start.ownNumberVariable));
}

/// Whether a variable of the caller's goes on to the program as it is.
bool isPassedOn(const ProgramStart& start, std::string_view name) {
    const auto isIt = [&](const auto& each) { return each.first == name; };
    return name != start.ownNumberVariable &&
           std::find(start.withoutVariables.begin(), start.withoutVariables.end(), name) ==
               start.withoutVariables.end() &&
           std::none_of(start.variables.begin(), start.variables.end(), isIt);
}

void prepareTexts(const ProgramStart& start, Preparation& preparation) {
    for (const std::string& argument : start.arguments) preparation.arguments.add(argument);
    for (char* const* entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        const std::string_view text = *entry;
        if (isPassedOn(start, text.substr(0, text.find('=')))) {
            preparation.environment.add(std::string(text));
        }
    }
    for (const auto& [name, value] : start.variables) {
        preparation.environment.add(name + "=" + value);
    }
    if (!start.ownNumberVariable.empty()) {
        const std::string variable = start.ownNumberVariable + "=";
        preparation.environment.add(variable + std::string(kNumberRoom, '\0'));
    }
    preparation.argumentPointers = preparation.arguments.pointers();
    preparation.environmentPointers = preparation.environment.pointers();
    if (!start.ownNumberVariable.empty()) {
        preparation.ownNumber = preparation.environment.last() + start.ownNumberVariable.size() + 1;
    }
    preparation.program = start.program.c_str();
    preparation.folder = start.folder.c_str();
}

/// Out of the way of the three standard streams, which the program gets others for.
Result<UniqueFd> moved(UniqueFd descriptor) {
    if (!descriptor.valid()) return lastError();
    if (descriptor.get() >= kFirstFreeDescriptor) return descriptor;
    UniqueFd higher(
        systemCall([&] { return fcntl(descriptor.get(), F_DUPFD_CLOEXEC, kFirstFreeDescriptor); }));
    if (!higher.valid()) return lastError();
    return higher;
}

/// gcc's thread sanitizer has locks of its own, which only a fork that it sees leaves usable.
pid_t copyOfCaller() {
#ifdef __SANITIZE_THREAD__
    return fork();
#else
    return _Fork();
#endif
}

OSStatus statusOfStart(int error, const std::string& program) {
    switch (error) {
        case ENOENT:
            // Of a program that is there, what it needs to be run is missing.
            return status(program, Follow::yes).ok() ? kLSExecutableIncorrectFormat
                                                     : kLSNoExecutableErr;
        case ENOTDIR:
        case ELOOP:
        case ENAMETOOLONG:
            return kLSNoExecutableErr;
        case EACCES:
        case EPERM:
            return kLSNoLaunchPermissionErr;
        case ENOEXEC:
        case ELIBBAD:
        case EINVAL:
            return kLSExecutableIncorrectFormat;
        case ENOMEM:
            return memFullErr;
        default:
            return kLSUnknownErr;
    }
}

/// Whether a process has the pipe open as the copy of the caller that it was: the same pipe under
/// the same number. One that may not be looked at is taken for such a copy.
bool holdsPipe(std::uint32_t process, int descriptor, int answers) {
    const auto held =
        readLink("/proc/" + std::to_string(process) + "/fd/" + std::to_string(descriptor));
    const auto own = readLink("/proc/thread-self/fd/" + std::to_string(answers));
    if (held.status() == fnfErr) return false;
    return !held.ok() || !own.ok() || *held == *own;
}

/// Leaves the child to be waited for. One that is unknown was waited for by somebody else here.
bool hasEnded(pid_t child) {
    siginfo_t information{};
    return waitid(P_PID, static_cast<id_t>(child), &information, WEXITED | WNOHANG | WNOWAIT) !=
               0 ||
           information.si_pid != 0;
}

struct Reports {
    std::uint32_t number = 0;
    int failure = 0;
};

/// Reads until a failure is reported or nobody can report any more: the program runs then, or
/// nothing of it is left. A copy of the caller that another thread made at the wrong moment may
/// keep the pipe open for long, so in the end only the processes of the start itself count: the one
/// between until it has told the program's number, then the program's.
Reports awaitReports(int answers, int descriptor, pid_t between) {
    constexpr int patience = 100;  // milliseconds
    int looksLeft = 50;
    Reports all;
    for (bool isLast = false; all.failure == 0;) {
        struct pollfd waiting = {answers, POLLIN, 0};
        const int ready = poll(&waiting, 1, isLast ? 0 : patience);
        if (ready == 0 && isLast) break;
        if (ready == 0) {
            const bool goesOn =
                all.number == 0 ? !hasEnded(between) : holdsPipe(all.number, descriptor, answers);
            isLast = !goesOn || --looksLeft == 0;
        }
        if (ready == 0 || (ready < 0 && errno == EINTR)) continue;
        Report report{};
        const ssize_t count = read(answers, &report, sizeof report);
        if (count < 0 && errno == EINTR) continue;
        if (count != sizeof report) break;
        const bool isFailure = report.kind == Report::Kind::failure;
        if (isFailure) all.failure = report.value;
        if (!isFailure) all.number = static_cast<std::uint32_t>(report.value);
        isLast = false;
    }
    return all;
}

Result<std::uint32_t> run(Preparation preparation, UniqueFd answers, const std::string& program) {
    pid_t child = -1;
    {
        const SignalsBlocked forTheCopies;
        child = systemCall(copyOfCaller);
        if (child == 0) makeOrphan(preparation);
    }
    if (child < 0) return Failure(errno == ENOMEM ? memFullErr : kLSUnknownErr);
    const int descriptor = preparation.reports.get();
    preparation.reports = UniqueFd();
    const Reports reports = awaitReports(answers.get(), descriptor, child);
    // Somebody else here may have waited for it already.
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) continue;
    if (reports.failure != 0) return Failure(statusOfStart(reports.failure, program));
    if (reports.number == 0) return Failure(kLSUnknownErr);
    return reports.number;
}

Result<void> checkExecutable(const std::string& path) {
    const auto found = status(path, Follow::yes);
    if (found.status() == permErr) return Failure(kLSNoLaunchPermissionErr);
    if (!found.ok() || !found->isRegular()) return Failure(kLSNoExecutableErr);
    if (systemCall([&] { return faccessat(AT_FDCWD, path.c_str(), X_OK, AT_EACCESS); }) != 0) {
        return Failure(kLSNoLaunchPermissionErr);
    }
    return {};
}

std::uint64_t descriptorLimit() {
    constexpr std::uint64_t most = 1 << 20;
    struct rlimit limit {};
    return getrlimit(RLIMIT_NOFILE, &limit) == 0 ? std::min<std::uint64_t>(limit.rlim_cur, most)
                                                 : most;
}

}  // namespace

Result<std::uint32_t> startProgram(const ProgramStart& start) {
    if (!isUsable(start)) return Failure(paramErr);
    if (getauxval(AT_SECURE) != 0) return Failure(kLSNoLaunchPermissionErr);
    Preparation preparation;
    prepareTexts(start, preparation);
    preparation.descriptorLimit = descriptorLimit();
    std::array<int, 2> ends = {-1, -1};
    if (systemCall([&] { return pipe2(ends.data(), O_CLOEXEC); }) != 0) {
        return Failure(kLSUnknownErr);
    }
    UniqueFd answers(ends[0]);
    auto reports = moved(UniqueFd(ends[1]));
    auto null = moved(UniqueFd(systemCall([] { return open("/dev/null", O_RDWR | O_CLOEXEC); })));
    if (!reports.ok() || !null.ok()) return Failure(kLSUnknownErr);
    preparation.reports = *std::move(reports);
    preparation.null = *std::move(null);
    return run(std::move(preparation), std::move(answers), start.program);
}

Result<std::string> findExecutable(const std::string& name) {
    if (name.starts_with('/')) {
        OSA_CHECK(checkExecutable(name));
        return name;
    }
    if (name.empty() || name.find('/') != std::string::npos) return Failure(kLSNoExecutableErr);
    std::string folders = environment("PATH");
    if (folders.empty()) folders = "/usr/local/bin:/usr/bin:/bin";
    for (std::size_t start = 0; start <= folders.size();) {
        const std::size_t end = std::min(folders.find(':', start), folders.size());
        const std::string path = folders.substr(start, end - start) + "/" + name;
        // Others than absolute ones would change with the current folder.
        if (folders[start] == '/' && checkExecutable(path).ok()) return path;
        start = end + 1;
    }
    return Failure(kLSNoExecutableErr);
}

}  // namespace osa::posix
