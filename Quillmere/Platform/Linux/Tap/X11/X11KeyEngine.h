#pragma once

#include "Quillmere/Platform/EventTap.h"
#include "Quillmere/Platform/Linux/Tap/X11/VerdictPort.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11Clock.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11DecidedPresses.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11KeyGrabs.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11KeyMatcher.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11KeyboardPort.h"

#include <chrono>
#include <cstdint>
#include <optional>

namespace quillmere {

/// A key event that one of our grabs has delivered. But for the release that
/// ends a key's own grab, the keyboard stands still at it.
struct X11GrabbedKey {
    unsigned int keyCode = 0;
    unsigned int modifiers = 0;  ///< real ones, before the event
    unsigned long time = 0;      ///< the server's
    int device = 0;              ///< the keyboard that the user typed on
    bool isRepeat = false;       ///< presses only
};

/// Decides about every press of interest on an X server's keyboard, as the
/// program behind the tap wants it. A pure state machine: no display and no
/// clock; whatever needs the time is given it, and everything that follows
/// goes out through the two ports. One thread at a time.
///
/// Two feeds: grabs deliver the presses of interest and hold the keyboard
/// still until there is a verdict; raw events tell of everything that happens
/// on the keyboard, also what the grabs miss. Both come in the order of the
/// fingers: while the keyboard stands still, raw events wait as well. Of one
/// press the raw event comes first, by the time that the server needs to tell
/// other clients of the grab, so it is what a press is decided at; the grab's
/// event is what the verdict is carried out at. Where raw events are not
/// listened to, the grab's event is both.
///
/// Raw events are listened to only while they can matter, so that ordinary
/// typing neither wakes the process nor is known to it. Each key that the
/// program was told of as pressed it is also told of as released. No client
/// sees the release of a key whose press was swallowed.
class X11KeyEngine {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// Changing a keyboard's map makes a burst of notifications; this long
    /// after the first one it is read.
    static constexpr std::chrono::milliseconds keymapSettles{30};
    /// How often to look whether another client has given the keyboard back.
    static constexpr std::chrono::milliseconds recordingRetryInterval{100};
    /// How long a recording keeps the whole keyboard: a screen locker, which
    /// needs it for itself, shall not wait for ever. What is recorded later
    /// reaches the focused program as well.
    static constexpr std::chrono::seconds longestRecording{30};

    /// Both must outlive this.
    X11KeyEngine(X11KeyboardPort& keyboard, VerdictPort& owner)
        : keyboard_(keyboard), owner_(owner), grabs_(keyboard) {}

    // What the program wants. All that has come in is handled before: taking
    // or giving back the keyboard loses the event at which it stands still.

    /// Replaces what is of interest. With nothing of interest there is no
    /// grab, and no event comes in.
    void setInterest(const KeyInterest& interest, TimePoint now);
    /// The program takes verdicts again after a time-out.
    void resynchronize(TimePoint now);

    /// Gives the keyboard back and wants nothing any more. What the server has
    /// sent already still has to be handled; then comes `stopListening`.
    void giveBack(TimePoint now);
    void stopListening();

    // What the server tells, in its order:
    void rawPress(unsigned int keyCode, unsigned long time);
    void rawRelease(unsigned int keyCode, unsigned long time);
    void modifiersChanged(unsigned int modifiers, unsigned long time);
    void keymapChanged(unsigned long time, TimePoint now);
    void grabbedPress(const X11GrabbedKey& key, TimePoint now);
    void grabbedRelease(const X11GrabbedKey& key, TimePoint now);
    /// All that has come in is handled.
    void settle() { updateListening(); }

    /// The time at which `tick` has something to do; none without.
    std::optional<TimePoint> deadline() const;
    void tick(TimePoint now);

private:
    /// What has the keyboard, of ours.
    enum class Hold {
        none,
        key,        ///< the grab of one key, until this key is released
        swallowed,  ///< the whole keyboard, until the swallowed keys are released
        recording,  ///< the whole keyboard, until the recording is over and all keys are up
    };

    void updateListening();
    bool needsRawKeys() const;
    void listen(bool on);
    void listenToKeys(bool on);
    void catchUp();
    void refreshKeymap();

    void updateRecording(TimePoint now, unsigned long since = 0);
    bool mayRecord() const { return matcher_.interest().everyKey && recordingEnd_; }
    bool takeForRecording(unsigned long since);
    void holdSwallowedKeys();
    void letKeyboardGo();

    void grabbedRepeat(const X11GrabbedKey& key, TimePoint now);
    void grabbingKeyReleased(const X11GrabbedKey& key);
    bool isKeptInGrab(unsigned int keyCode) const;
    InterceptDecision decide(unsigned int keyCode, unsigned int modifiers, unsigned long time);
    void replayToClient(TimePoint now);
    void tapFiller(const X11GrabbedKey& key);

    void tellRelease(unsigned int keyCode, unsigned long time);
    void tellFlags(unsigned long time);
    void tellOtherKey(unsigned long time);
    KeyEventFields fields(std::uint32_t type, unsigned int modifiers, unsigned long time);

    X11KeyboardPort& keyboard_;
    VerdictPort& owner_;
    X11Clock clock_;
    X11KeyMatcher matcher_;
    X11KeyGrabs grabs_;
    X11DecidedPresses decided_;

    bool isListening_ = false;        ///< to the modifiers and the map
    bool isListeningToKeys_ = false;  ///< to raw events
    unsigned int modifiers_ = 0;      ///< real ones in effect
    unsigned long lastTime_ = 0;      ///< of the last event
    Hold hold_ = Hold::none;
    unsigned int grabbingKey_ = 0;  ///< whose grab has the keyboard
    bool isFnDown_ = false;
    bool isFnTold_ = false;  ///< what the program knows of Fn
    X11Keys told_;           ///< the program knows of the press and not yet of the release
    X11Keys swallowed_;      ///< no client has seen the press
    std::optional<TimePoint> keymapRefresh_;
    std::optional<TimePoint> recordingRetry_;
    std::optional<TimePoint> recordingEnd_;  ///< none: there is no recording, or it has lasted too long
};

}  // namespace quillmere
