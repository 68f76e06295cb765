// How long one call of something takes, for the benchmarks.
#pragma once

#include <algorithm>
#include <chrono>
#include <functional>

namespace osa::bench {

/// Seconds for one call of `work`: the best of five runs of `shortestRun` seconds at least.
inline double secondsOf(const std::function<void()>& work, double shortestRun) {
    using Clock = std::chrono::steady_clock;
    double best = 1e18;
    for (int round = 0; round < 5; ++round) {
        long calls = 0;
        const auto start = Clock::now();
        std::chrono::duration<double> elapsed{};
        do {
            work();
            ++calls;
            elapsed = Clock::now() - start;
        } while (elapsed.count() < shortestRun);
        best = std::min(best, elapsed.count() / static_cast<double>(calls));
    }
    return best;
}

}  // namespace osa::bench
