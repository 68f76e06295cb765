// Imports 2,000 pairs of a small script and its side file through the plug-in in one process,
// against a loop that only opens, asks, reads and closes both files of each pair; prints CPU time
// as a ratio, and the system calls a file that each makes. Usage: osa-bench-import [PAIRS]
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFRef.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "service/ImporterHost.h"
#include "tools/samples/Sample.h"

namespace fs = std::filesystem;

namespace {

constexpr int kRounds = 7;
constexpr int kTracedFiles = 100;

struct Pair {
    std::string file;
    std::string sideFile;
};

std::vector<Pair> makePairs(const fs::path& folder, int count) {
    std::vector<Pair> pairs;
    osa::samples::Json sample = {
        {"type", "osas"},
        {"creator", "ToyS"},
        {"resources",
         {{{"type", "TEXT"}, {"id", 1128}, {"text", std::string(200, 'd')}},
          {{"type", "TEXT"}, {"id", 2000}, {"text", std::string(4000, 's')}}}}};
    for (int i = 0; i < count; ++i) {
        const std::string name = "Script " + std::to_string(i);
        sample["name"] = name;
        sample["data"] = {{"text", i % 2 == 0 ? "" : "a small script of some forty bytes or so"}};
        pairs.push_back({osa::samples::writeSample(sample, folder), folder / ("._" + name)});
    }
    return pairs;
}

void readWhole(const std::string& path) {
    static std::array<char, 65536> buffer;
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status;
    if (fd < 0 || fstat(fd, &status) != 0) std::abort();
    if (pread(fd, buffer.data(), buffer.size(), 0) != status.st_size) std::abort();
    close(fd);
}

void floorLoop(const std::vector<Pair>& pairs, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        readWhole(pairs[i].file);
        readWhole(pairs[i].sideFile);
    }
}

void importLoop(osa::service::ImporterHost& host, const std::vector<Pair>& pairs,
                std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const auto attributes = osa::service::ImporterHost::makeAttributes();
        if (!host.callImporter(pairs[i].file, attributes.get())) std::abort();
        if (CFDictionaryGetCount(attributes.get()) != 2) std::abort();
    }
}

double cpuSeconds(const std::function<void()>& work) {
    timespec before;
    timespec after;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &before);
    work();
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &after);
    return static_cast<double>(after.tv_sec - before.tv_sec) +
           static_cast<double>(after.tv_nsec - before.tv_nsec) / 1e9;
}

/// System calls of `work` in a traced child; -1 where tracing is not allowed.
long countSystemCalls(const std::function<void()>& work) {
    const pid_t child = fork();
    if (child == 0) {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(1);
        raise(SIGSTOP);
        work();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (!WIFSTOPPED(status)) return -1;
    long stops = 0;
    while (ptrace(PTRACE_SYSCALL, child, nullptr, nullptr) == 0 &&
           waitpid(child, &status, 0) == child && WIFSTOPPED(status)) {
        ++stops;
    }
    return stops / 2;  // a stop when a call begins and one when it ends
}

double callsPerFile(const std::function<void(std::size_t)>& loop) {
    const long without = countSystemCalls([&] { loop(1); });
    const long with = countSystemCalls([&] { loop(1 + kTracedFiles); });
    return static_cast<double>(with - without) / kTracedFiles;
}

}  // namespace

int main(int argc, char** argv) {
    const int count = argc > 1 ? std::atoi(argv[1]) : 2000;
    std::string reason;
    const auto host = osa::service::ImporterHost::load(osa::service::findImporterBundle(), reason);
    if (host == nullptr || count <= kTracedFiles) {
        std::fprintf(stderr, "osa-bench-import: %s\n", host ? "too few pairs" : reason.c_str());
        return 1;
    }
    const fs::path folder = fs::temp_directory_path() / ("osa-bench-" + std::to_string(getpid()));
    fs::create_directories(folder);
    const std::vector<Pair> pairs = makePairs(folder, count);
    double floor = 1e9;
    double import = 1e9;
    for (int round = 0; round < kRounds; ++round) {
        floor = std::min(floor, cpuSeconds([&] { floorLoop(pairs, pairs.size()); }));
        import = std::min(import, cpuSeconds([&] { importLoop(*host, pairs, pairs.size());
    }));
}
std::printf("%d pairs, best of %d rounds, CPU time a file: floor %.2f us, import %.2f us\n", count,
            kRounds, floor / count * 1e6, import / count * 1e6);
std::printf("ratio: %.2f\n", import / floor);
std::printf("system calls a file: floor %.1f, import %.1f\n",
            callsPerFile([&](std::size_t files) { floorLoop(pairs, files); }),
            callsPerFile([&](std::size_t files) { importLoop(*host, pairs, files); }));
fs::remove_all(folder);
return 0;
}
