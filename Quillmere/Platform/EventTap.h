#pragma once

#include "Quillmere/Platform/KeyEvent.h"
#include "QuillmereCore/Shortcut.h"

#include <functional>
#include <string>
#include <vector>

namespace quillmere {

/// The keys that the program needs to see in full. A tap may withhold every
/// other key: it then delivers a press of no interest as a system-defined
/// event while a lone Fn tap could be under way (which is all that the gesture
/// needs), and not at all otherwise.
struct KeyInterest {
    std::vector<Shortcut> shortcuts;  ///< these presses are delivered and wait for a verdict
    bool everyKey = false;            ///< a recording is under way: every press is delivered

    friend bool operator==(const KeyInterest&, const KeyInterest&) = default;
};

/// A shortcut and what it goes through: all that a desktop has to know to switch
/// by itself. With no sources it is one that the desktop swallows and delivers,
/// as any other tap would.
struct ArmedShortcut {
    Shortcut shortcut;
    std::vector<std::string> sourceIDs;  ///< of its group, in cycling order

    friend bool operator==(const ArmedShortcut&, const ArmedShortcut&) = default;
};

/// The system-wide keyboard filter. All members and the callback on the main
/// thread.
class EventTap {
public:
    /// Decides one event. It must return quickly: a tap that gets no verdict
    /// in time passes the key and reports `tapDisabledByTimeout`.
    using Callback = std::function<InterceptDecision(const KeyEventFields&)>;

    EventTap() = default;
    EventTap(const EventTap&) = delete;
    EventTap& operator=(const EventTap&) = delete;
    virtual ~EventTap() = default;

    /// Starts delivering events, enabled; false when the platform refuses
    /// (no permission, no such facility), which may change later: also when it
    /// delivers only a part of what is wanted. Once it has returned true it is
    /// called again only where `deliversAll` is false.
    virtual bool install(Callback callback) = 0;

    /// Turns the tap on again after it was disabled. Nothing without a tap.
    virtual void enable() = 0;

    /// Replaces what the tap must deliver; effective for the next key press.
    /// May be called before `install`, and whenever the interest may have
    /// changed: the same one again costs nothing.
    virtual void setInterest(const KeyInterest& interest) = 0;

    /// Replaces what the shortcuts of interest go through, for a tap whose
    /// desktop swallows a press and switches by itself; every other has no use
    /// for it. May be called whenever `setInterest` may.
    virtual void arm(const std::vector<ArmedShortcut>& /*shortcuts*/) {}

    /// The desktop has switched by itself, to this source of a shortcut's group.
    /// Comes once the source is in effect, in place of the event: no other
    /// callback hears of that press. Does nothing until set.
    std::function<void(const Shortcut& shortcut, const std::string& sourceID)> onSwitched = [](const Shortcut&,
                                                                                               const std::string&) {};

    /// Whether an installed tap delivers all of its interest; where it does not,
    /// the permission for what would deliver the rest is missing.
    virtual bool deliversAll() const { return true; }
};

}  // namespace quillmere
