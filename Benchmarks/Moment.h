#pragma once

#include "Benchmarks/Sampling.h"

#include <atomic>
#include <cstdint>

namespace quillmere::bench {

/// The moment of something that one thread notes and another waits for.
class Moment {
public:
    /// It is now.
    void note();
    /// Forgets what was noted.
    void reset() { moment_ = 0; }
    /// Waits until it is noted; the time from `start` to it in microseconds, or
    /// a negative number when it never is.
    double await(Clock::time_point start) const;

private:
    std::atomic<std::int64_t> moment_{0};  ///< nanoseconds of Clock; 0 for none
};

}  // namespace quillmere::bench
