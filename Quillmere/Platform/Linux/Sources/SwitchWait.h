#pragma once

#include <chrono>

namespace quillmere {

/// The longest that a whole switch (which source is current, which there are,
/// select, read back) may hold the main thread: less than the 500 ms that a tap
/// waits for its verdict.
inline constexpr std::chrono::milliseconds longestSwitch{400};

/// One wait for a desktop's answer, from its making to its end. A switch is
/// several of them that know nothing of each other, but all in one turn of the
/// event loop: together they have `longestSwitch`, and the next turn has it
/// anew. What else a turn does, as the program's start, takes nothing of it.
/// Main thread only; not within one another.
class SwitchWait {
public:
    SwitchWait();
    ~SwitchWait();
    SwitchWait(const SwitchWait&) = delete;
    SwitchWait& operator=(const SwitchWait&) = delete;

    /// Another switch begins, of a press that came while the one before was waited
    /// for: it has the whole time, in the same turn too.
    static void renew();

    /// When this wait must end; it may be at once.
    std::chrono::steady_clock::time_point deadline() const;

private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace quillmere
