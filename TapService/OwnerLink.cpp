#include "TapService/OwnerLink.h"

#include "TapService/KeyRole.h"

#include <algorithm>
#include <utility>

namespace quillmere::tap {

namespace {

std::uint64_t nanoseconds(Time time) {
    return static_cast<std::uint64_t>(time.count());
}

}  // namespace

void OwnerLink::attach(OwnerPort& port, bool enabled) {
    drop();
    port_ = &port;
    enabled_ = enabled;
}

void OwnerLink::detach(std::uint8_t flags, Time now) {
    if (fnWasTold_) {
        const auto others = static_cast<std::uint8_t>(flags & Flags::modifiers);
        // First a key, or the release that never happened could complete a tap.
        tellOther(now, others);
        tellFlags(now, others);
    }
    drop();
}

void OwnerLink::drop() {
    port_ = nullptr;
    interest_ = {};
    codes_.reset();
    enabled_ = false;
    wasDisabled_ = false;
    fnWasTold_ = false;
}

void OwnerLink::setInterest(const Interest& interest) {
    interest_ = interest;
    // Not the program's choice: with every letter a shortcut of its own it
    // would learn what is typed.
    std::erase_if(interest_.shortcuts, [](const TapShortcut& shortcut) { return !shortcut.isToldOf(); });
    codes_.reset();
    for (const TapShortcut& shortcut : interest_.shortcuts) {
        // No program gets a mouse's buttons, or keeps the computer from being
        // turned off.
        if (shortcut.code < keyCodeLimit && roleOf(shortcut.code) == KeyRole::key) codes_.set(shortcut.code);
    }
}

bool OwnerLink::enable() {
    return isAttached() && !std::exchange(enabled_, true);
}

void OwnerLink::disable(DisabledReason reason) {
    if (!isAttached() || !std::exchange(enabled_, false)) return;
    wasDisabled_ = true;
    port_->tellDisabled(reason);
}

bool OwnerLink::isOfInterest(std::uint16_t code, std::uint8_t flags) const {
    if (!enabled_) return false;
    if (isRecording()) return true;
    if (!codes_.test(code)) return false;
    const TapShortcut pressed{code, static_cast<std::uint8_t>(flags & Flags::modifiers)};
    return std::ranges::find(interest_.shortcuts, pressed) != interest_.shortcuts.end();
}

bool OwnerLink::wantsGrab(const KeySet& keys, bool isTyping) const {
    return enabled_ && ((isRecording() && isTyping) || (codes_ & keys).any());
}

bool OwnerLink::tellKey(KeyEventKind kind, const InputEvent& event, std::uint8_t flags, std::uint32_t sequence) {
    return tell({kind, event.code, flags, sequence, nanoseconds(event.time)});
}

bool OwnerLink::tellOther(Time time, std::uint8_t flags) {
    return fnWasTold_ && tell({.kind = KeyEventKind::other, .flags = flags, .time = nanoseconds(time)});
}

bool OwnerLink::tellFlags(Time time, std::uint8_t flags) {
    const bool fnIsDown = (flags & Flags::fn) != 0;
    // Modifiers matter only to a tap of Fn that is under way.
    const bool isOfInterest = fnWasTold_ || (fnIsDown && wantsFn());
    if (!enabled_ || !isOfInterest) return false;
    // An owner that did not take it still believes what it was told last.
    if (!tell({.kind = KeyEventKind::flags, .flags = flags, .time = nanoseconds(time)})) return false;
    fnWasTold_ = fnIsDown;
    return true;
}

bool OwnerLink::tell(const KeyEvent& event) {
    if (!enabled_) return false;
    if (port_->tell(event)) return true;
    disable(DisabledReason::timeout);
    return false;
}

}  // namespace quillmere::tap
