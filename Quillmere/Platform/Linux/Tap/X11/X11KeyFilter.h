#pragma once

#include "Quillmere/Platform/EventTap.h"
#include "Quillmere/Platform/Linux/Tap/X11/VerdictExchange.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11Clock.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11DecidedPresses.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11FillerKey.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11KeyGrabs.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11KeyMatcher.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11KeyboardGrab.h"
#include "Quillmere/Platform/Linux/X11/X11Connection.h"

#include <bitset>
#include <chrono>
#include <cstdint>
#include <optional>

union _XEvent;  // NOLINT(bugprone-reserved-identifier): Xlib's own name

namespace quillmere {

/// Watches the keyboard of an X server and decides about every press of
/// interest, as the tap's callback wants it. One thread at a time.
///
/// Two feeds: grabs deliver the presses of interest and hold the keyboard
/// still until there is a verdict; raw events tell of everything that happens
/// on the keyboard, also what the grabs miss. Both come in the order of the
/// fingers: while the keyboard stands still, raw events wait as well. Of one
/// press the raw event comes first, by the time that the server needs to tell
/// other clients of the grab, so it is what a press is decided at; the grab's
/// event is what the verdict is carried out at. Raw events are listened to only
/// while they can matter, so that ordinary typing neither wakes the process nor
/// is known to it. Each key that the callback was told of as pressed it is also
/// told of as released.
class X11KeyFilter {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// Both must outlive this.
    X11KeyFilter(X11Connection& connection, VerdictExchange& exchange);

    /// Replaces what is of interest. With nothing of interest there is no
    /// grab, and no event comes in.
    void setInterest(const KeyInterest& interest);

    /// The exchange delivers again after it was disabled.
    void resynchronize();

    /// Gives everything back, for good or until the next `setInterest`.
    void letGo();

    /// Handles all events that have come in.
    void processEvents();

    /// The time at which `processDeadlines` has something to do; none without.
    std::optional<TimePoint> deadline() const;
    void processDeadlines();

private:
    /// A key event that one of our grabs has delivered; the keyboard stands
    /// still at it.
    struct GrabbedKey {
        unsigned int keyCode = 0;
        unsigned int modifiers = 0;  ///< real ones, before the event
        unsigned long time = 0;
        int device = 0;  ///< the keyboard that the user typed on
        bool isRepeat = false;
    };
    using Keys = std::bitset<256>;

    void applyInterest();
    void updateListening();
    bool needsRawKeys() const;
    void listen(bool on);
    void listenToKeys(bool on);
    void readKeyboard();
    void refreshKeymap();
    void updateRecording();

    void dispatch(_XEvent& event);
    void dispatchRaw(int type, const void* data);
    void dispatchGrabbed(int type, const void* data);
    void dispatchXkb(const _XEvent& event);

    void rawPress(unsigned int keyCode, unsigned long time);
    void rawRelease(unsigned int keyCode, unsigned long time);
    void modifiersChanged(unsigned int modifiers, unsigned long time);

    void grabbedPress(const GrabbedKey& key);
    void grabbedRepeat(const GrabbedKey& key);
    void grabbedRelease(const GrabbedKey& key);
    bool isKeptInGrab(unsigned int keyCode) const;
    InterceptDecision decide(unsigned int keyCode, unsigned int modifiers, unsigned long time);

    bool isHoldingKeyboard() const { return grabbingKey_ != 0 || recording_.isHeld(); }
    void keepForUs();
    void replayToClient();

    void tellRelease(unsigned int keyCode, unsigned long time);
    void tellFlags(unsigned long time);
    void tellOtherKey(unsigned long time);
    KeyEventFields fields(std::uint32_t type, unsigned int modifiers, unsigned long time);

    X11Connection& connection_;
    VerdictExchange& exchange_;
    X11Clock clock_;
    X11KeyMatcher matcher_;
    X11KeyGrabs grabs_;
    X11KeyboardGrab recording_;
    X11FillerKey filler_;
    X11DecidedPresses decided_;

    bool isListening_ = false;        ///< to the modifiers and the map
    bool isListeningToKeys_ = false;  ///< to raw events
    unsigned int modifiers_ = 0;      ///< real ones in effect
    unsigned long lastTime_ = 0;      ///< of the last event
    unsigned int grabbingKey_ = 0;    ///< the held key whose grab has the keyboard; 0 without
    bool isFnDown_ = false;
    bool isFnTold_ = false;  ///< what the callback knows of Fn
    Keys down_;              ///< pressed since raw events are listened to
    Keys told_;              ///< the callback knows of the press and not yet of the release
    Keys swallowed_;         ///< no client has seen the press
    std::optional<TimePoint> keymapRefresh_;
    std::optional<TimePoint> recordingRetry_;
};

}  // namespace quillmere
