#pragma once

#include <cstdint>

/// The part of the window server that sees the keyboard: a test types on it.
namespace windowserver {

struct Event {
    std::uint32_t type = 0;  ///< CGEventType
    std::int64_t keyCode = 0;
    std::int64_t autorepeat = 0;
    std::uint64_t flags = 0;
    std::uint64_t timestamp = 0;  ///< nanoseconds
};

/// What became of an event.
enum class Fate { delivered, swallowed };

extern bool isTrusted;  ///< the user has allowed the program Accessibility
extern bool isSlow;     ///< the next answer comes too late

/// Sends the event through the tap, as the main run loop would.
Fate post(const Event& event);
/// Turns the tap off as the user may, and tells it.
void disableByUserInput();
bool hasTap();
bool isTapEnabled();
int tapsMade();

/// Trusted again, and swift, and without a memory of taps.
void reset();

}  // namespace windowserver
