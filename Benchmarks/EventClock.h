#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <thread>

namespace quillmere::bench {

using Clock = std::chrono::steady_clock;

/// A client of an X server that notes the moment at which it hears of a layout
/// change, and of a key press in its focused window. It waits in a thread of
/// its own, as any other program would, so that the moments include the time
/// that it takes a program to be woken.
class EventClock {
public:
    /// Opens its window, takes the focus and waits until it has both.
    explicit EventClock(const std::string& display);
    ~EventClock();
    EventClock(const EventClock&) = delete;
    EventClock& operator=(const EventClock&) = delete;

    /// Forgets what has been noted.
    void reset();

    /// Waits for the next layout change, or key press, after `reset`; the time
    /// since `start` in microseconds, or a negative number when none comes.
    double layoutChange(Clock::time_point start) const { return await(layoutChange_, start); }
    double keyPress(Clock::time_point start) const { return await(keyPress_, start); }

private:
    void run(const std::string& display);
    static double await(const std::atomic<std::int64_t>& moment, Clock::time_point start);

    std::atomic<std::int64_t> layoutChange_{0};  ///< nanoseconds of Clock; 0 for none
    std::atomic<std::int64_t> keyPress_{0};
    std::atomic<bool> isReady_{false};
    int stopPipe_[2];
    std::thread thread_;
};

}  // namespace quillmere::bench
