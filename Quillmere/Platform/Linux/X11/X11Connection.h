#pragma once

#include <memory>

// Xlib stays out of the headers, since its macros break Qt's.
struct _XDisplay;  // NOLINT(bugprone-reserved-identifier): Xlib's own name

namespace quillmere {

/// A connection of our own to a real X server with XInput 2.2 and XKB. Used by
/// one thread at a time. An error that the server reports to it is ignored
/// (grabs and devices come and go), and its loss does not end the process.
class X11Connection {
public:
    /// Connects to the session's display; null without one, when it lacks an
    /// extension, and for Xwayland, whose keyboard is not the desktop's.
    static std::unique_ptr<X11Connection> open();
    ~X11Connection();
    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;

    _XDisplay* display() const { return display_; }
    unsigned long root() const;
    int fileDescriptor() const;

    int xinputOpcode() const { return xinputOpcode_; }  ///< marks its generic events
    int xkbEventBase() const { return xkbEventBase_; }  ///< type of its events
    int masterKeyboard() const { return masterKeyboard_; }

    /// The server is gone. Calls on the display then do nothing.
    bool isLost() const { return isLost_; }

    /// Waits until the server has processed everything sent so far; what it
    /// has reported until then is in the queue.
    void synchronize() const;

private:
    explicit X11Connection(_XDisplay* display);
    bool initialize();
    bool findMasterKeyboard();
    bool isXwayland() const;

    _XDisplay* display_;
    int xinputOpcode_ = 0;
    int xkbEventBase_ = 0;
    int masterKeyboard_ = 0;
    bool isLost_ = false;
};

}  // namespace quillmere
