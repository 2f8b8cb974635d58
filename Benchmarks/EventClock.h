#pragma once

#include "Benchmarks/Moment.h"

#include <atomic>
#include <functional>
#include <string>
#include <thread>

namespace quillmere::bench {

/// A key going down or up in a window, as a toolkit tells an input method.
struct WindowKey {
    unsigned int symbol = 0;  ///< the keysym in the layout in use
    unsigned int code = 0;    ///< X's key code
    unsigned int state = 0;   ///< the modifiers
    unsigned int time = 0;    ///< the server's
    bool isRelease = false;
};

/// A client of an X server that notes the moment at which it hears of a layout
/// change, whether within the keymap or with another one, and of a key press in
/// its focused window. It waits in a thread of its own, as any other program
/// would, so that the moments include the time that it takes a program to be
/// woken.
class EventClock {
public:
    using Listener = std::function<void(const WindowKey&)>;

    /// Opens its window, takes the focus and waits until it has both. The
    /// listener is told every key, in that thread.
    explicit EventClock(const std::string& display, Listener listener = {});
    ~EventClock();
    EventClock(const EventClock&) = delete;
    EventClock& operator=(const EventClock&) = delete;

    Moment& layoutChange() { return layoutChange_; }
    Moment& keyPress() { return keyPress_; }

private:
    void run(const std::string& display);

    Listener listener_;
    Moment layoutChange_;
    Moment keyPress_;
    std::atomic<bool> isReady_{false};
    int stopPipe_[2];
    std::thread thread_;
};

}  // namespace quillmere::bench
