// What descriptors cost beside a plain copy of the same bytes: creating, duplicating, coercing
// text, and appending to and walking through lists. Prints nanoseconds and ratios taken in one run.
// Usage: osa-bench-descriptors
#include <CoreServices/AEDataModel.h>
#include <CoreServices/MacErrors.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "bench/Timing.h"

namespace {

constexpr double kShortestRun = 0.05;  // seconds

double nanoseconds(const std::function<void()>& work) {
    return osa::bench::secondsOf(work, kShortestRun) * 1e9;
}

void require(OSErr status) {
    if (status != noErr) std::abort();
}

void printRow(const char* what, std::size_t size, double cost, double floor) {
    std::printf("%-28s %10zu %12.0f %10.1f x\n", what, size, cost, cost / floor);
}

/// The floor: a block of the same bytes, made and freed.
double copyCost(const std::string& bytes) {
    return nanoseconds([&bytes] {
        void* const block = std::malloc(bytes.size());
        std::memcpy(block, bytes.data(), bytes.size());
        asm volatile("" : : "g"(block) : "memory");
        std::free(block);
    });
}

void measureData(std::size_t size) {
    const std::string bytes(size, 'a');
    const double floor = copyCost(bytes);
    printRow("plain copy", size, floor, floor);
    const auto create = [&bytes](AEDesc* desc) {
        require(AECreateDesc(typeChar, bytes.data(), static_cast<Size>(bytes.size()), desc));
    };
    AEDesc source;
    create(&source);
    const auto row = [&](const char* what, const std::function<void(AEDesc*)>& make) {
        printRow(what, size, nanoseconds([&make] {
                     AEDesc made;
                     make(&made);
                     AEDisposeDesc(&made);
                 }),
                 floor);
    };
    row("create, dispose", create);
    row("duplicate, dispose", [&](AEDesc* made) { require(AEDuplicateDesc(&source, made)); });
    row("coerce TEXT to utxt",
        [&](AEDesc* made) { require(AECoerceDesc(&source, typeUnicodeText, made)); });
    row("coerce TEXT to utf8",
        [&](AEDesc* made) { require(AECoerceDesc(&source, typeUTF8Text, made)); });
    AEDisposeDesc(&source);
}

/// A list of `count` numbers.
AEDesc listOf(std::size_t count) {
    AEDesc list;
    require(AECreateList(nullptr, 0, false, &list));
    for (std::size_t i = 0; i < count; ++i) {
        const auto value = static_cast<SInt32>(i);
        require(AEPutPtr(&list, 0, typeSInt32, &value, sizeof value));
    }
    return list;
}

void measureList(std::size_t count) {
    struct Item {
        UInt32 keyword, type, size, flags;
        SInt64 value;
    };
    const double floor = nanoseconds([count] {
        std::vector<Item> items;
        for (std::size_t i = 0; i < count; ++i) items.push_back({0, 0, 4, 0, SInt32(i)});
        asm volatile("" : : "g"(items.data()) : "memory");
    });
    const auto each = static_cast<double>(count);
    printRow("vector push_back, an item", count, floor / each, floor / each);
    printRow("append to list, an item", count, nanoseconds([count] {
                                                   AEDesc list = listOf(count);
                                                   AEDisposeDesc(&list);
                                               }) / each,
             floor / each);
    AEDesc list = listOf(count);
    printRow("walk through list, an item", count,
             nanoseconds([&list, count] {
                 SInt32 value;
                 for (std::size_t i = 1; i <= count; ++i)
                     require(AEGetNthPtr(&list, static_cast<SInt32>(i), typeSInt32, nullptr,
                                         nullptr, &value, sizeof value, nullptr));
             }) / each,
             floor / each);
    AEDisposeDesc(&list);
}

}  // namespace

int main() {
    std::printf("%-28s %10s %12s %12s\n", "", "bytes", "ns", "of floor");
    for (const std::size_t size : {16, 4096, 1048576}) measureData(size);
    std::printf("%-28s %10s %12s %12s\n", "", "items", "ns", "of floor");
    for (const std::size_t count : {100, 10000, 1000000}) measureList(count);
}
