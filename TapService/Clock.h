#pragma once

#include "TapService/TapPorts.h"

#include <time.h>

namespace quillmere::tap {

/// Now, on the system's monotonic clock, as events are stamped.
inline Time monotonicNow() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

/// The same instant as sd-event counts it.
inline std::uint64_t microseconds(Time time) {
    return static_cast<std::uint64_t>(std::chrono::ceil<std::chrono::microseconds>(time).count());
}

}  // namespace quillmere::tap
