#pragma once

#include "Quillmere/Platform/EventTap.h"
#include "Quillmere/Platform/Linux/Tap/X11/VerdictPort.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11KeyEngine.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11ServerKeyboard.h"
#include "Quillmere/Platform/Linux/X11/X11Connection.h"

#include <optional>

union _XEvent;  // NOLINT(bugprone-reserved-identifier): Xlib's own name

namespace quillmere {

/// The engine at an X server: hands it the events that come in, in the
/// engine's terms, and the time. One thread at a time.
class X11KeyFilter {
public:
    using TimePoint = X11KeyEngine::TimePoint;

    /// Both must outlive this.
    X11KeyFilter(X11Connection& connection, VerdictPort& owner);

    /// Replaces what is of interest. With nothing of interest there is no
    /// grab, and no event comes in.
    void setInterest(const KeyInterest& interest);

    /// The program takes verdicts again after a time-out.
    void resynchronize();

    /// Gives everything back, for good or until the next `setInterest`.
    void letGo();

    /// Handles all events that have come in.
    void processEvents();

    /// The time at which `processDeadlines` has something to do; none without.
    std::optional<TimePoint> deadline() const { return engine_.deadline(); }
    void processDeadlines();

private:
    void dispatch(_XEvent& event);
    void dispatchRaw(int type, const void* data);
    void dispatchGrabbed(int type, const void* data);
    void dispatchXkb(const _XEvent& event);

    X11Connection& connection_;
    X11ServerKeyboard keyboard_;
    X11KeyEngine engine_;
};

}  // namespace quillmere
