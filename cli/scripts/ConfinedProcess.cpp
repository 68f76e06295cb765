// Work in a child process: its limits, and waiting for it.
#include "cli/scripts/ConfinedProcess.h"

#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <optional>

#include "cli/Command.h"

namespace osa::cli {
namespace {

/// Until an engine is loaded, on a machine that is busy.
constexpr int kStartMilliseconds = 30'000;
/// From closing all that it has until a process is gone.
constexpr int kEndMilliseconds = 10'000;
/// What an engine maps without using it: reserves for code and for its collector.
constexpr rlim_t kEngineReserve = rlim_t{16} << 30;
/// What it may write to besides values: it starts with some 30 MiB on two processors, most of that
/// its threads' stacks, of which there is one for each processor.
constexpr rlim_t kEngineData = rlim_t{120} << 20;
constexpr rlim_t kThreadData = rlim_t{4} << 20;

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define OSA_HAS_SHADOW_MEMORY
#endif
#elif defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define OSA_HAS_SHADOW_MEMORY
#endif
#if defined(OSA_HAS_SHADOW_MEMORY)
constexpr bool kBoundsAddresses = false;  // shadow memory takes terabytes of them
#else
constexpr bool kBoundsAddresses = true;
#endif

#if defined(__x86_64__)
constexpr UInt32 kArchitecture = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr UInt32 kArchitecture = AUDIT_ARCH_AARCH64;
#else
#error "the calls of this processor are not known"
#endif

constexpr std::array kForbiddenCalls = {
    SYS_socket,
    SYS_execve,
    SYS_execveat,
    SYS_ptrace,
    SYS_process_vm_readv,
    SYS_process_vm_writev,
    SYS_io_uring_setup,
    SYS_bpf,
    SYS_kill,
    SYS_tkill,
    SYS_tgkill,
    SYS_rt_sigqueueinfo,
    SYS_rt_tgsigqueueinfo,
    SYS_pidfd_send_signal,
    SYS_unlinkat,
    SYS_renameat,
    SYS_renameat2,
    SYS_truncate,
#if defined(SYS_unlink)  // newer processors have only those above
    SYS_unlink,
    SYS_rmdir,
    SYS_rename,
#endif
};

/// Has the forbidden calls answer EPERM. Where the kernel has no filters it goes without them.
void forbidCalls() {
    constexpr auto kCount = kForbiddenCalls.size();
    std::array<sock_filter, 6 + 2 * kCount + 1> program;
    std::size_t at = 0;
    const auto add = [&](sock_filter instruction) { program[at++] = instruction; };
    add(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, arch)));
    add(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, kArchitecture, 1, 0));
    add(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS));
    add(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)));
    // the same calls under the numbers of another calling convention
    add(BPF_JUMP(BPF_JMP | BPF_JGE | BPF_K, 0x40000000, 0, 1));
    add(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS));
    for (const long call : kForbiddenCalls) {
        add(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<UInt32>(call), 0, 1));
        add(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM));
    }
    add(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    const sock_fprog filter{static_cast<unsigned short>(at), program.data()};
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter);
}

void bound(int resource, rlim_t value) {
    const rlimit limit{value, value};
    setrlimit(static_cast<__rlimit_resource>(resource), &limit);
}

/// What of the process's memory can be written to.
rlim_t dataBytes() {
    rlim_t pages = 0;
    if (std::FILE* const file = std::fopen("/proc/self/statm", "re")) {
        if (std::fscanf(file, "%*s %*s %*s %*s %*s %lu", &pages) != 1) pages = 0;
        std::fclose(file);
    }
    return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

void boundMemory(rlim_t bytes) {
    const auto threads = static_cast<rlim_t>(std::max(sysconf(_SC_NPROCESSORS_ONLN), 1L));
    const rlim_t engine = kEngineData + threads * kThreadData;
    // what grows is there twice while it is moved
    bound(RLIMIT_AS, kEngineReserve + engine + 2 * bytes);
    bound(RLIMIT_DATA, dataBytes() + engine + 2 * bytes);
}

void confine(const OSALimits& limits) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    bound(RLIMIT_CORE, 0);
    // threads of the engine count as well, and starting it
    if (limits.milliseconds != 0) bound(RLIMIT_CPU, limits.milliseconds / 1000 * 4 + 30);
    if (limits.memoryBytes != 0 && kBoundsAddresses) boundMemory(limits.memoryBytes);
    forbidCalls();
}

/// What the child tells through its end of a pipe: a byte when the time begins, one when it ends,
/// and the end.
class Progress {
  public:
    explicit Progress(int descriptor) : descriptor_(descriptor) {}
    ~Progress() { close(descriptor_); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Waits for the end; why the child is to be stopped, else empty. No time is for ever.
    std::string waitForEnd(UInt32 limit) const {
        Next told = next(kStartMilliseconds);
        if (told == Next::timeOut)
            return "was stopped: it was not loaded within " + std::to_string(kStartMilliseconds) +
                   " ms";
        const auto time = static_cast<int>(std::min(limit, UInt32{1} << 29));
        if (told == Next::byte) told = next(time == 0 ? -1 : 2 * time);
        if (told == Next::timeOut)
            return "was stopped: it did not end within twice its " + std::to_string(limit) + " ms";
        // it prints, and who reads that may be slow
        while (told == Next::byte) told = next(-1);
        return {};
    }

  private:
    enum class Next { byte, end, timeOut };

    Next next(int milliseconds) const {
        char byte = 0;
        using Clock = std::chrono::steady_clock;
        const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
        for (;;) {
            const auto left =
                std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
            if (milliseconds >= 0 && left < 0) return Next::timeOut;
            pollfd wanted{descriptor_, POLLIN, 0};
            const int ready = poll(&wanted, 1, milliseconds < 0 ? -1 : static_cast<int>(left));
            if (ready == 0) return Next::timeOut;
            if (ready < 0) continue;
            const ssize_t count = read(descriptor_, &byte, 1);
            if (count >= 0 || errno != EINTR) return count == 1 ? Next::byte : Next::end;
        }
    }

    int descriptor_;
};

/// The descriptor under a number that is no standard stream's; negative when there is none.
int besideStreams(int descriptor) {
    if (descriptor < 0 || descriptor > STDERR_FILENO) return descriptor;
    const int other = besideStreams(dup(descriptor));
    close(descriptor);
    return other;
}

/// A pipe beside the standard streams, which may be closed: what is printed must not go into it. No
/// program is started that could inherit it.
bool makePipe(int (&ends)[2]) {
    if (pipe(ends) != 0) return false;
    for (int& end : ends) end = besideStreams(end);
    if (ends[0] >= 0 && ends[1] >= 0) return true;
    for (const int end : ends)
        if (end >= 0) close(end);
    return false;
}

[[noreturn]] void runChild(const OSALimits& limits, int progress,
                           const std::function<int(const ConfinedProgress&)>& work) {
    confine(limits);
    int status = kSomethingFailed;
    try {
        const auto tell = [progress] { (void)!write(progress, "b", 1); };
        status = work({tell, tell});
    } catch (...) {
        std::fputs("osa: the script's process failed\n", stderr);
    }
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        reportError("standard output", "cannot be written");
        status = kSomethingFailed;
    }
    _exit(status);
}

struct Ended {
    int status = 0;
    rusage usage{};
};

/// How the child ended; nothing when it cannot be told, be it that the child does not end.
std::optional<Ended> waitFor(pid_t child) {
    for (int waited = 0; waited < kEndMilliseconds; ++waited) {
        Ended told;
        const pid_t ended = wait4(child, &told.status, WNOHANG, &told.usage);
        if (ended == child) return told;
        if (ended < 0 && errno != EINTR) return {};
        poll(nullptr, 0, 1);
    }
    kill(child, SIGKILL);
    return {};
}

/// An engine that gets no memory where it cannot go on without crashes, on purpose.
bool lackedMemory(const Ended& ended, UInt32 limit) {
    const int signal = WTERMSIG(ended.status);
    return limit != 0 && kBoundsAddresses && (signal == SIGSEGV || signal == SIGABRT) &&
           ended.usage.ru_maxrss > static_cast<long>(limit / 1024);
}

ConfinedOutcome outcomeOf(const std::optional<Ended>& ended, const OSALimits& limits) {
    if (!ended) return {kSomethingFailed, "how its process ended cannot be told"};
    if (WIFEXITED(ended->status)) return {WEXITSTATUS(ended->status), {}};
    const int signal = WTERMSIG(ended->status);
    if (signal == SIGXCPU) return {kSomethingFailed, "was stopped: it took too much time"};
    if (lackedMemory(*ended, limits.memoryBytes))
        return {kSomethingFailed, "was stopped: it took too much time or memory"};
    return {kSomethingFailed, std::string("its process ended: ") + strsignal(signal)};
}

}  // namespace

ConfinedOutcome runConfined(const OSALimits& limits,
                            const std::function<int(const ConfinedProgress&)>& work) {
    // ignored, as a program may inherit it, it would leave no status to wait for
    signal(SIGCHLD, SIG_DFL);
    std::fflush(stdout);
    std::fflush(stderr);
    int ends[2];
    if (!makePipe(ends)) return {kSomethingFailed, "no process can be started for it"};
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        runChild(limits, ends[1], work);
    }
    close(ends[1]);
    const Progress progress(ends[0]);
    if (child < 0) return {kSomethingFailed, "no process can be started for it"};
    std::string reason = progress.waitForEnd(limits.milliseconds);
    if (reason.empty()) return outcomeOf(waitFor(child), limits);
    kill(child, SIGKILL);
    waitFor(child);
    return {kSomethingFailed, std::move(reason)};
}

}  // namespace osa::cli
