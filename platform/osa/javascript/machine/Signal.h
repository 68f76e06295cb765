// What one thread gives and another waits for.
#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace osa::script {

/// Given once, taken once. Going to sleep and being woken takes longer than most calls, so a thread
/// that has to wait first lets others go on for a moment and looks again. Where that was of no use
/// (the work is long, or the processors are busy with others, who keep them for a whole time slice)
/// it sleeps at once the next times, the more of them the more often it was of no use.
class Signal {
  public:
    void give() {
        {
            const std::lock_guard lock(mutex_);
            given_ = true;
        }
        wake_.notify_one();
    }
    void take() {
        if (!watch()) {
            std::unique_lock lock(mutex_);
            wake_.wait(lock, [this] { return given_.load(); });
        }
        given_ = false;
    }
    /// False when it was not given in time.
    bool takeWithin(std::chrono::milliseconds time) {
        if (!watch()) {
            std::unique_lock lock(mutex_);
            if (!wake_.wait_for(lock, time, [this] { return given_.load(); })) return false;
        }
        given_ = false;
        return true;
    }

  private:
    bool watch() {
        using Clock = std::chrono::steady_clock;
        if (given_) return true;
        if (asleep_ > 0) {
            --asleep_;
            return false;
        }
        const Clock::time_point end = Clock::now() + kWatch;
        bool inTime = true;
        do {
            std::this_thread::yield();
            inTime = Clock::now() < end;
        } while (!given_ && inTime);
        inVain_ = inTime ? inVain_ / 2 : std::min(2 * inVain_ + 1, kMostInVain);
        if (!inTime) asleep_ = inVain_;
        return given_;
    }

    static constexpr std::chrono::microseconds kWatch{20};
    static constexpr int kMostInVain = 16383;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::atomic<bool> given_ = false;
    // With the thread that takes:
    int inVain_ = 0;  ///< how often it sleeps at once after watching in vain
    int asleep_ = 0;  ///< how often it does so still
};

}  // namespace osa::script
