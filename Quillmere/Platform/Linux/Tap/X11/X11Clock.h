#pragma once

#include <cstdint>

namespace quillmere {

/// The X server's time as event timestamps need it. The server counts
/// milliseconds in 32 bits, which wrap every 49.7 days. A value.
class X11Clock {
public:
    /// The server time of an event in nanoseconds, on one scale for the life
    /// of this clock. Events may come somewhat out of order.
    std::uint64_t nanoseconds(unsigned long serverTime) {
        const auto low = static_cast<std::uint32_t>(serverTime);
        if (!hasStarted_) {
            hasStarted_ = true;
            milliseconds_ = low;
        }
        // The nearest point with these low bits, before or after the last one.
        const auto step = static_cast<std::int32_t>(low - static_cast<std::uint32_t>(milliseconds_));
        milliseconds_ += step;
        return static_cast<std::uint64_t>(milliseconds_) * nanosecondsPerMillisecond;
    }

private:
    static constexpr std::uint64_t nanosecondsPerMillisecond = 1'000'000;

    bool hasStarted_ = false;
    /// Signed, since the first events may go back beyond the start.
    std::int64_t milliseconds_ = 0;
};

}  // namespace quillmere
