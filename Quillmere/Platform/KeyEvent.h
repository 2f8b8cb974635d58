#pragma once

#include <cstdint>

namespace quillmere {

/// The event types that matter, as the macOS event services number them
/// (CGEventType).
namespace KeyEventType {
inline constexpr std::uint32_t keyDown = 10;
inline constexpr std::uint32_t keyUp = 11;
inline constexpr std::uint32_t flagsChanged = 12;
inline constexpr std::uint32_t systemDefined = 14;  ///< a special key, or a key of no interest
inline constexpr std::uint32_t tapDisabledByTimeout = 0xFFFFFFFE;
inline constexpr std::uint32_t tapDisabledByUserInput = 0xFFFFFFFF;
}  // namespace KeyEventType

/// Bits of an event's flag word (CGEventFlags).
namespace KeyEventFlags {
inline constexpr std::uint64_t capsLock = 1U << 16;
inline constexpr std::uint64_t shift = 1U << 17;
inline constexpr std::uint64_t control = 1U << 18;
inline constexpr std::uint64_t option = 1U << 19;
inline constexpr std::uint64_t command = 1U << 20;
inline constexpr std::uint64_t secondaryFn = 1U << 23;
}  // namespace KeyEventFlags

/// One keyboard event as a tap delivers it.
struct KeyEventFields {
    std::uint32_t type = 0;
    std::int64_t keyCode = 0;     ///< virtual key code; key-down and key-up only
    std::int64_t autorepeat = 0;  ///< non-zero for a repeat; key-down only
    std::uint64_t flags = 0;      ///< flag word
    std::uint64_t timestamp = 0;  ///< nanoseconds on one monotonic clock
};

/// What becomes of an event.
enum class InterceptDecision { pass, swallow };

}  // namespace quillmere
