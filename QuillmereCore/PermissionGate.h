#pragma once

#include <functional>

namespace quillmere {

/// Knows whether the program may watch the keyboard, and tells its owner once
/// when that permission arrives. Main thread only.
class PermissionGate {
public:
    enum class State { needed, granted };

    /// Calls `isGranted` once, at once; a grant found here is silent.
    explicit PermissionGate(std::function<bool()> isGranted);

    /// Moves from needed to granted only, never back.
    State state() const { return state_; }

    /// Called once with the new state when a `tick` finds the grant; it may
    /// replace itself or stop whatever calls `tick`.
    std::function<void(State)> onChange;

    /// One polling step: asks again while the state is `needed`.
    void tick();

private:
    State state_;
    std::function<bool()> isGranted_;
};

}  // namespace quillmere
