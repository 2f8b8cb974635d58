#pragma once

#include "Tests/Support/Keys.h"
#include "Tests/Support/XConnection.h"

#include <QPoint>

#include <span>
#include <string>
#include <vector>

namespace quillmere::support {

/// A sequence of key movements, written in the order of the fingers.
class Strokes {
public:
    struct Movement {
        Key key;
        bool isPress;
    };

    Strokes& press(Key key);
    Strokes& release(Key key);
    /// Press and release.
    Strokes& tap(Key key);
    /// The modifiers held around one tap of `key`.
    Strokes& chord(std::span<const Key> modifiers, Key key);

    const std::vector<Movement>& movements() const { return movements_; }

private:
    std::vector<Movement> movements_;
};

/// Presses keys and moves the pointer as hardware would: the server takes them
/// for its own devices' input (XTEST), grabs included.
class Typist {
public:
    explicit Typist(const std::string& display);

    /// Sends the whole sequence without a gap and without waiting for effects.
    void play(const Strokes& strokes);

    /// Sends it with the pauses that a hand makes between two movements, a fast
    /// one.
    void playByHand(const Strokes& strokes);

    void press(Key key) { play(Strokes().press(key)); }
    void release(Key key) { play(Strokes().release(key)); }
    void tap(Key key) { play(Strokes().tap(key)); }
    void chord(std::span<const Key> modifiers, Key key) { play(Strokes().chord(modifiers, key)); }

    void movePointer(QPoint to);
    /// The left button, where the pointer is.
    void click();
    void pressButton();
    void releaseButton();

private:
    XConnection connection_;
};

}  // namespace quillmere::support
