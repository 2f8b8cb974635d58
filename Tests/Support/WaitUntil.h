#pragma once

#include <chrono>
#include <functional>

namespace quillmere::support {

/// How long a condition may take to become true before a test gives up. Far
/// above what anything needs, since a loaded machine must not fail a test.
inline constexpr std::chrono::milliseconds patience{20'000};

/// Polls `condition` every few milliseconds until it is true; false when
/// `deadline` has passed first. Meanwhile the Qt event loop of the calling
/// thread runs, so that D-Bus services of this process answer. Needs an
/// application object.
bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds deadline = patience);

/// Watches that `condition` stays true for the whole of `duration`; false as
/// soon as it is not. For the few promises about something not happening that
/// no later event can prove.
bool holdsFor(const std::function<bool()>& condition, std::chrono::milliseconds duration);

}  // namespace quillmere::support
