#pragma once

#include <chrono>
#include <optional>

struct _XDisplay;  // NOLINT(bugprone-reserved-identifier): Xlib's own name

namespace quillmere::guard {

/// Watches a process that has grabbed keys on an X server. While such a grab
/// awaits its verdict the keyboard stands still; a process that was stopped
/// (SIGSTOP, a debugger) would hold it until it continues. So as long as the
/// keyboard may come to stand still, which takes a modifier of a shortcut or a
/// recording, the process is asked whether it is there, and when it does not
/// answer its connection is closed, with all its grabs. At rest nothing is
/// asked, and nobody woken.
///
/// It sees modifiers come and go, and no other key.
class Guard {
public:
    using Time = std::chrono::steady_clock::time_point;

    static constexpr std::chrono::milliseconds askEvery{500};
    /// Longer than the process waits for its own main thread.
    static constexpr std::chrono::milliseconds patience{2000};

    /// `socket`: to the process. `resource`: anything that it has made through
    /// the connection it grabs with. Both must outlive this.
    Guard(_XDisplay* display, int socket, unsigned long resource);

    /// Returns when the process has gone, or its connection was closed.
    void run();

private:
    void readEvents();
    /// False when the process has gone.
    bool readSocket();
    bool isNeeded() const { return isModifierHeld_ || isRecording_; }
    void ask(Time now);
    void wait(Time now) const;

    _XDisplay* display_;
    int socket_;
    unsigned long resource_;
    int xkbEventBase_ = 0;
    bool isModifierHeld_ = false;
    bool isRecording_ = false;
    std::optional<Time> askedAt_;  ///< no answer yet
    Time nextQuestion_{};
};

}  // namespace quillmere::guard
