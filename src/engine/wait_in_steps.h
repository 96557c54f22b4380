// Waiting for threads that may be stuck in a call of the system.
#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>

inline constexpr std::uint32_t kUnlimitedWait = 0xFFFFFFFF;  // milliseconds

// Waits up to `maxWait` milliseconds until `ended` says so, which is asked under the lock, as `free` is
// called each time: a thread that was freed may get stuck in its next call. `whileWaiting`, which may be
// empty, is called a few times a second without the lock. True when it has ended.
template <typename TEnded, typename TFree>
bool WaitInSteps(std::unique_lock<std::mutex>& lock, std::condition_variable& changed, std::uint32_t maxWait,
                 const TEnded& ended, const TFree& free, const std::function<void()>& whileWaiting) {
    using TClock = std::chrono::steady_clock;
    constexpr TClock::duration kStep = std::chrono::milliseconds(50);
    const auto until = TClock::now() + std::chrono::milliseconds(maxWait);
    while (!ended()) {
        free();
        TClock::duration step = kStep;
        if (maxWait != kUnlimitedWait) {
            const auto now = TClock::now();
            if (now >= until) {
                return false;
            }
            step = std::min(step, until - now);
        }
        if (changed.wait_for(lock, step) == std::cv_status::timeout && whileWaiting) {
            lock.unlock();
            whileWaiting();
            lock.lock();
        }
    }
    return true;
}
