// The program that tests launch: tells in a file how it was started, and waits until it is killed.
#include <signal.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

const char* variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "(none)" : value;
}

}  // namespace

int main(int count, char** arguments) {
    alarm(30);  // whatever becomes of the test
    const std::string report = std::string(variable("OSA_LAUNCH_REPORT")) + "." +
                               std::filesystem::path(arguments[0]).filename().string();
    std::string streams;
    for (const auto& each : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        const auto target = std::filesystem::read_symlink(each, gone);
        if (target.string().find("/proc/") != 0) streams += target.string() + " ";
    }
    struct sigaction action {};
    sigaction(SIGUSR1, nullptr, &action);
    sigset_t mask;
    sigprocmask(SIG_SETMASK, nullptr, &mask);
    std::ofstream out(report + ".new");
    for (int each = 1; each < count; ++each) out << arguments[each] << "|";
    out << "\nin " << std::filesystem::current_path().string() << "\nstreams " << streams
        << "\nleads " << (getsid(0) == getpid()) << "\nignores " << (action.sa_handler == SIG_IGN)
        << sigismember(&mask, SIGUSR2) << "\nentry " << variable("GIO_LAUNCHED_DESKTOP_FILE") << " "
        << (variable("GIO_LAUNCHED_DESKTOP_FILE_PID") == std::to_string(getpid())) << "\ntoken "
        << variable("XDG_ACTIVATION_TOKEN") << "\n";
    out.close();
    std::filesystem::rename(report + ".new", report);
    for (;;) pause();
}
