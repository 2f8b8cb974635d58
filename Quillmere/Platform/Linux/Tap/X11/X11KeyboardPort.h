#pragma once

#include "Quillmere/Platform/Linux/Tap/X11/X11KeyCombination.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11Keymap.h"

#include <optional>
#include <vector>

namespace quillmere {

/// What the engine does with the keyboard of an X server. None of these may
/// call the engine back. Those without a result are sent with `flush` at the
/// latest.
class X11KeyboardPort {
public:
    using Combinations = std::vector<X11KeyCombination>;

    X11KeyboardPort() = default;
    X11KeyboardPort(const X11KeyboardPort&) = delete;
    X11KeyboardPort& operator=(const X11KeyboardPort&) = delete;
    virtual ~X11KeyboardPort() = default;

    /// From now on changes of the modifiers and of the keyboard's map come in,
    /// or no longer.
    virtual void listen(bool on) = 0;
    /// The same for the raw events of every key.
    virtual void listenToKeys(bool on) = 0;

    virtual X11Keymap readKeymap() = 0;
    /// The real modifiers in effect; none when the server does not say.
    virtual std::optional<unsigned int> readModifiers() = 0;
    virtual X11Keys readKeysDown() = 0;

    /// Takes these combinations from all other clients: a press then comes to
    /// us, and the keyboard stands still at it. Returns those that were free.
    virtual Combinations grab(const Combinations& combinations) = 0;
    virtual void ungrab(const Combinations& combinations) = 0;

    /// Takes the whole keyboard, which then stands still without an event to
    /// decide about. False when another client has it, when a grab has begun
    /// after the server's time `since` (0: at any time), since its event would
    /// be lost, and when the server refuses.
    virtual bool grabKeyboard(unsigned long since) = 0;
    /// Gives the keyboard back, also one that a key's grab holds.
    virtual void ungrabKeyboard() = 0;

    /// No client sees the event at which the keyboard stands still; it goes on
    /// to the next one that is for us.
    virtual void keep() = 0;
    /// The client sees this event as if there were no grab; the grab ends.
    virtual void replay() = 0;

    /// Taps a key that types nothing on the keyboard with this device number.
    virtual void tapFiller(unsigned int keyCode, int device) = 0;

    virtual void flush() = 0;
};

}  // namespace quillmere
