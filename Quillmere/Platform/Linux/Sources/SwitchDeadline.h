#pragma once

#include <chrono>

namespace quillmere {

/// The longest that a whole switch (which source is current, which there are,
/// select, read back) may hold the main thread: less than the 500 ms that a tap
/// waits for its verdict.
inline constexpr std::chrono::milliseconds longestSwitch{400};

/// When the switch that is under way must have come to its end. A switch is
/// several calls that know nothing of each other, but all in one turn of the
/// event loop: the first one that asks starts the time, the next turn ends it.
/// Always ahead: who asks after the end of it starts the time again. Main thread
/// only.
std::chrono::steady_clock::time_point switchDeadline();

}  // namespace quillmere
