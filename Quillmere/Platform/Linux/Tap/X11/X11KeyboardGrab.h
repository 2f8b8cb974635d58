#pragma once

#include "Quillmere/Platform/Linux/X11/X11Connection.h"

namespace quillmere {

/// The whole keyboard taken from all other clients, as recording a shortcut
/// needs it. It stands still at every key until we have decided.
class X11KeyboardGrab {
public:
    /// `connection` must outlive this.
    explicit X11KeyboardGrab(X11Connection& connection) : connection_(connection) {}

    /// False when another client has the keyboard or the server refuses.
    bool take();

    /// Gives the keyboard back, also one that a key's grab holds.
    void release();

    /// The server has ended it, as a replayed event does.
    void forget() { isHeld_ = false; }

    bool isHeld() const { return isHeld_; }

    /// Whether no key is down.
    bool areAllKeysUp() const;

private:
    X11Connection& connection_;
    bool isHeld_ = false;
};

}  // namespace quillmere
