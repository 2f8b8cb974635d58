#pragma once

#include "Tests/Support/Keys.h"
#include "Tests/Support/XConnection.h"

#include <QColor>
#include <QRect>

#include <string>
#include <vector>

union _XEvent;  // NOLINT(bugprone-reserved-identifier): so Xlib names it

namespace quillmere::support {

/// One key event as an application gets it.
struct SeenKey {
    bool isPress = false;
    Key key = 0;
    unsigned int modifiers = 0;  ///< the core modifier bits at that moment, group bits removed
    int group = 0;               ///< the layout in use, by its index
    std::string text;            ///< what it types, UTF-8; empty for a key without text
};

/// An ordinary application that looks on: a window with the keyboard focus
/// that writes down every key it gets, and a listener to the layout in use,
/// the focus and the clicks.
class Witness {
public:
    enum class Size { normal, fullScreen };

    /// Opens its window and waits for the keyboard focus. Throws when it gets
    /// none.
    Witness(const std::string& display, Size size, QColor background = Qt::white);
    ~Witness();
    Witness(const Witness&) = delete;
    Witness& operator=(const Witness&) = delete;

    /// Every key event since the start or the last `clear`.
    const std::vector<SeenKey>& keys();
    /// How many presses of `key` it got.
    std::size_t presses(Key key);
    /// What was typed into it: the texts of all presses in a row.
    std::string text();
    /// Whether any press or release of `key` arrived.
    bool saw(Key key);

    /// The layouts that came into use one after the other, by index.
    const std::vector<int>& groups();
    /// How often its window has lost the keyboard focus to another window.
    int focusLosses();
    /// Positions of the button presses that its window got, on the screen.
    const std::vector<QPoint>& clicks();

    /// Forgets everything seen so far.
    void clear();

    /// Takes the whole keyboard, as an open menu does, and gives it back.
    bool grabKeyboard();
    void ungrabKeyboard();
    /// Takes one key combination for itself, as a desktop's own shortcuts do;
    /// false when another program has it.
    bool grabKey(Key key, unsigned int modifiers);

    /// Moves its window, frame and all, and waits until it is there.
    void moveTo(QPoint origin);

    unsigned long window() const { return window_; }
    XConnection& connection() { return connection_; }

private:
    void openWindow(Size size, QColor background);
    void readEvents();
    void note(_XEvent& event);
    void noteKey(_XEvent& event);
    void noteFocus(const _XEvent& event);
    void noteLayout(_XEvent& event);

    XConnection connection_;
    unsigned long window_ = 0;
    int xkbEvent_ = 0;
    std::vector<SeenKey> keys_;
    std::vector<int> groups_;
    std::vector<QPoint> clicks_;
    int focusLosses_ = 0;
    bool hasFocus_ = false;
};

}  // namespace quillmere::support
