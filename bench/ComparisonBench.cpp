// Compares file names as the Finder does, against strcoll in the user's locale (en_US.UTF-8 or
// C.UTF-8 where he has none). Prints nanoseconds and their ratio. Usage: osa-bench-comparison
// [NAMES]
#include <algorithm>
#include <chrono>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "Libraries/MacToolboxLib/TBUtilities/StringUtilities.h"

namespace {

struct Name {
    std::string bytes;
    TCLString units;
};

std::vector<Name> makeNames(int count) {
    static const char* const kWords[] = {"Resize", "Images",  "caf\xC3\xA9",   "Backup",
                                         "of",     "Library", "Ger\xC3\xA4te", "script",
                                         "Copy",   "Untitled"};
    std::minstd_rand random(1904);
    std::vector<Name> names;
    for (int i = 0; i < count; ++i) {
        std::string name = kWords[random() % std::size(kWords)];
        for (unsigned words = random() % 3; words > 0; --words)
            name += std::string(" ") + kWords[random() % std::size(kWords)];
        name += " " + std::to_string(random() % 1000) + ".scpt";
        names.push_back({name, ToTCLString(name.c_str(), kCFStringEncodingUTF8)});
    }
    return names;
}

/// Nanoseconds a comparison of neighbours.
double eachPair(const std::vector<Name>& names,
                const std::function<int(const Name&, const Name&)>& compare) {
    using Clock = std::chrono::steady_clock;
    long sum = 0;
    const auto start = Clock::now();
    for (std::size_t i = 1; i < names.size(); ++i) sum += compare(names[i - 1], names[i]);
    const std::chrono::duration<double, std::nano> elapsed = Clock::now() - start;
    asm volatile("" : : "g"(sum) : "memory");
    return elapsed.count() / static_cast<double>(names.size() - 1);
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<Name> names = makeNames(std::max(argc > 1 ? std::atoi(argv[1]) : 100000, 2));
    const char* locale = std::setlocale(LC_COLLATE, "");
    if (locale == nullptr || std::strcmp(locale, "C") == 0)
        locale = std::setlocale(LC_COLLATE, "en_US.UTF-8");
    if (locale == nullptr) locale = std::setlocale(LC_COLLATE, "C.UTF-8");
    if (locale == nullptr) locale = "C";
    const double floor = eachPair(names, [](const Name& a, const Name& b) {
        return std::strcoll(a.bytes.c_str(), b.bytes.c_str());
    });
    const double finder = eachPair(
        names, [](const Name& a, const Name& b) { return CompareLikeTheFinder(a.units, b.units); });
    std::printf("%zu names\n", names.size());
    std::printf("%-24s %8.0f ns   (locale %s)\n", "strcoll", floor, locale);
    std::printf("%-24s %8.0f ns %6.1f x\n", "CompareLikeTheFinder", finder, finder / floor);
}
