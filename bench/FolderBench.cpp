// Walks a folder of many files with a visitor, against a bare directory read as `ls -f` makes it
// and against one that also asks for each entry once; prints CPU time as ratios, and how much the
// process grew. Usage: osa-bench-folder [ENTRIES]
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "Libraries/MacToolboxLib/TBUtilities/FileVisitor.h"

namespace fs = std::filesystem;

namespace {

constexpr int kRounds = 5;

class Counter : public FileVisitor {
  public:
    bool ProcessFile(const CFileSpec&, bool) override {
        ++count;
        return true;
    }
    long count = 0;
};

/// Seconds of CPU time of the best round.
double seconds(const std::function<void()>& work) {
    double best = 1e18;
    for (int round = 0; round < kRounds; ++round) {
        const std::clock_t start = std::clock();
        work();
        const std::clock_t used = std::clock() - start;
        best = std::min(best, static_cast<double>(used) / CLOCKS_PER_SEC);
    }
    return best;
}

long readNames(const fs::path& folder, bool asksForEach) {
    DIR* const directory = opendir(folder.c_str());
    if (directory == nullptr) std::abort();
    long count = 0;
    while (const dirent* const entry = readdir(directory)) {
        struct statx about;
        if (asksForEach)
            statx(dirfd(directory), entry->d_name, AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS, &about);
        ++count;
    }
    closedir(directory);
    return count;
}

long residentKiB() {
    long pages = 0;
    std::ifstream statm("/proc/self/statm");
    statm >> pages >> pages;
    return pages * sysconf(_SC_PAGESIZE) / 1024;
}

CFileSpec specOf(const fs::path& path) {
    const auto* const bytes = reinterpret_cast<const UInt8*>(path.c_str());
    FSRef ref;
    if (FSPathMakeRef(bytes, &ref, nullptr) != 0) std::abort();
    return CFileSpec(ref);
}

void printRow(const char* what, double cost, double floor) {
    std::printf("%-32s %9.1f ms %8.1f x\n", what, cost * 1e3, cost / floor);
}

}  // namespace

int main(int argc, char** argv) {
    const int entries = std::max(argc > 1 ? std::atoi(argv[1]) : 100000, 1);
    std::string pattern = (fs::temp_directory_path() / "osa-bench-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) return 1;
    const fs::path folder = pattern;
    for (int i = 0; i < entries; ++i)
        std::ofstream(folder / ("Script number " + std::to_string(i) + ".scpt"));

    const CFileSpec spec = specOf(folder);
    const double names = seconds([&] { readNames(folder, false); });
    const double asked = seconds([&] { readNames(folder, true); });
    Counter counter;
    const long before = residentKiB();
    counter.ScanFolder(spec);
    const long grown = residentKiB() - before;
    const double walk = seconds([&] { counter.ScanFolder(spec); });

    std::printf("%d entries, %ld visited a walk\n", entries, counter.count / (kRounds + 1));
    printRow("read names (ls -f)", names, names);
    printRow("the same, one statx an entry", asked, names);
    printRow("ScanFolder", walk, names);
    std::printf("%-32s %9.1f x\n", "ScanFolder, of one statx each", walk / asked);
    std::printf("%-32s %9ld KiB\n", "grown by the first walk", grown);
    fs::remove_all(folder);
}
