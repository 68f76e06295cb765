// osa-examples: writes the example scripts of a folder of descriptions to disk in one folder, and
// prints the path of each. Usage: osa-examples OUTPUT [DESCRIPTIONS]
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "tools/samples/Sample.h"

namespace fs = std::filesystem;

namespace {

void makeExamples(const fs::path& descriptions, const fs::path& output) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(descriptions)) {
        if (entry.path().extension() == ".json") files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    fs::remove_all(output);
    fs::create_directories(output);
    for (const fs::path& file : files) {
        const fs::path item = osa::samples::writeSample(osa::samples::readSample(file), output);
        std::printf("%s\n", item.c_str());
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2 || argc > 3) {
        std::fprintf(stderr, "usage: osa-examples OUTPUT [DESCRIPTIONS]\n");
        return 2;
    }
    try {
        makeExamples(argc == 3 ? argv[2] : "examples", argv[1]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "osa-examples: %s\n", error.what());
        return 1;
    }
    return 0;
}
