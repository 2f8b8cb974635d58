#pragma once

#include "Benchmarks/EventClock.h"
#include "Tests/Support/Desktop.h"
#include "Tests/Support/TextField.h"

#include <optional>
#include <string>
#include <utility>

namespace quillmere::bench {

/// One of the programs between which a person on X11 chooses to switch between
/// two layouts, English and Ukrainian, on a desktop of its own.
class Choice {
public:
    /// Its shortcut is this modifier and Space; `layouts` are the X server's, as
    /// setxkbmap takes them.
    Choice(std::string name, support::Key modifier, const std::string& layouts = "us,ua")
        : name_(std::move(name)), modifier_(modifier), desktop_({.layouts = layouts}) {}
    virtual ~Choice() = default;
    Choice(const Choice&) = delete;
    Choice& operator=(const Choice&) = delete;

    const std::string& name() const { return name_; }

    /// From the press of Space until another program has heard of the other
    /// layout, in microseconds; negative when it never does.
    double timeSwitch();

    /// From now on a text field has the keyboard.
    void openTextField();
    /// Presses the shortcut and a letter without a gap.
    void typeBurst();
    /// Of the letters of `typeBurst`: those in the layout from which the
    /// shortcut should have switched, and those that have not come.
    int wrongLetters() const { return wrong_; }
    int lostLetters() const { return lost_; }

protected:
    /// Where another program's hearing of a switch is noted.
    virtual Moment& change() { return clock_->layoutChange(); }
    /// What Qt calls the framework through which a text field gets its keys.
    virtual const char* textMethod() const { return "compose"; }
    /// Opens the other program, whose window has the keyboard.
    void listen(const EventClock::Listener& listener = {}) { clock_.emplace(desktop_.display(), listener); }
    void stopListening() { clock_.reset(); }
    /// Throws when the shortcut does not come to switch.
    void waitUntilReady();

    support::Desktop& desktop() { return desktop_; }

private:
    /// The letter that comes of it; empty when none does.
    std::string typed(const support::Strokes& strokes);

    std::string name_;
    support::Key modifier_;
    support::Desktop desktop_;
    std::optional<EventClock> clock_;
    std::optional<support::TextField> field_;
    int wrong_ = 0;
    int lost_ = 0;
};

}  // namespace quillmere::bench
