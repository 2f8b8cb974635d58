#include "Tests/X11Tap/FakeX11Keyboard.h"

#include "Quillmere/Platform/Linux/Tap/KeyCodes.h"

#include <linux/input-event-codes.h>

#include <algorithm>
#include <sstream>
#include <utility>

namespace quillmere::support {

namespace {

// The real modifiers as XKB's usual map has them.
constexpr unsigned int altBit = 1U << 3;
constexpr unsigned int numLockBit = 1U << 4;
constexpr unsigned int superBit = 1U << 6;
constexpr unsigned int levelThreeBit = 1U << 7;

struct Named {
    const char* name;
    unsigned int keyCode;
    unsigned int modifier;
};
constexpr unsigned int x11(unsigned int evdevCode) {
    return evdevCode + KeyCodes::x11Offset;
}
constexpr Named keys[] = {
    {"a", x11(KEY_A), 0},
    {"b", x11(KEY_B), 0},
    {"k", x11(KEY_K), 0},
    {"s", x11(KEY_S), 0},
    {"space", x11(KEY_SPACE), 0},
    {"mute", x11(KEY_MUTE), 0},
    {"fn", x11(KEY_WAKEUP), 0},
    {"ctrl", x11(KEY_LEFTCTRL), X11Keymap::control},
    {"rctrl", x11(KEY_RIGHTCTRL), X11Keymap::control},
    {"shift", x11(KEY_LEFTSHIFT), X11Keymap::shift},
    {"alt", x11(KEY_LEFTALT), altBit},
    {"altgr", x11(KEY_RIGHTALT), levelThreeBit},
    {"super", x11(KEY_LEFTMETA), superBit},
    {"caps", x11(KEY_CAPSLOCK), X11Keymap::capsLock},
    {"num", x11(KEY_NUMLOCK), numLockBit},
    {"filler", FakeX11Keyboard::filler, 0},
};

const Named* find(unsigned int keyCode) {
    const auto* const found = std::ranges::find(keys, keyCode, &Named::keyCode);
    return found == std::end(keys) ? nullptr : found;
}

void append(std::string& line, const std::string& word) {
    if (!line.empty()) line += ' ';
    line += word;
}

}  // namespace

FakeX11Keyboard::FakeX11Keyboard()
    : map_{.alt = altBit, .super = superBit, .numLock = numLockBit, .unusedKeyCode = filler, .modifierKeys = {}} {
    for (const Named& each : keys)
        map_.modifierKeys[each.keyCode] = each.modifier != 0;
}

unsigned int FakeX11Keyboard::code(const std::string& name) {
    const auto* const found = std::ranges::find(keys, name, &Named::name);
    return found == std::end(keys) ? 0 : found->keyCode;
}

std::string FakeX11Keyboard::name(unsigned int keyCode) {
    const Named* const found = find(keyCode);
    return found == nullptr ? std::to_string(keyCode) : found->name;
}

X11KeyCombination FakeX11Keyboard::combination(const std::string& text) {
    X11KeyCombination result;
    std::istringstream names(text);
    for (std::string each; std::getline(names, each, '+');) {
        const Named* const key = find(code(each));
        if (key != nullptr && key->modifier != 0) {
            result.modifiers |= key->modifier;
        } else {
            result.keyCode = code(each);
        }
    }
    return result;
}

bool FakeX11Keyboard::isFlagKey(unsigned int keyCode) {
    const Named* const key = find(keyCode);
    return key != nullptr && (key->modifier != 0 || keyCode == code("fn"));
}

const std::vector<unsigned int>& FakeX11Keyboard::codes() {
    static const std::vector<unsigned int> result = [] {
        std::vector<unsigned int> all;
        for (const Named& each : keys)
            if (each.keyCode != filler) all.push_back(each.keyCode);
        return all;
    }();
    return result;
}

unsigned int FakeX11Keyboard::modifierOf(unsigned int keyCode) const {
    const Named* const key = find(keyCode);
    if (key == nullptr) return 0;
    if (key->modifier == altBit) return map_.alt;
    return key->modifier == superBit ? map_.super : key->modifier;
}

unsigned int FakeX11Keyboard::modifiers() const {
    unsigned int result = locked_;
    for (const Named& each : keys)
        if (down_[each.keyCode]) result |= modifierOf(each.keyCode);
    return result;
}

// The fingers and the other clients

void FakeX11Keyboard::move(unsigned int keyCode, bool isPress, bool isRepeat) {
    time += 10;
    held_[keyCode] = isPress;
    if (isPress && !isRepeat) lastPressed_ = keyCode;
    waiting_.push_back({keyCode, isPress, isRepeat, time, isStandingStill() || !inbox.empty() || !waiting_.empty()});
    play();
}

bool FakeX11Keyboard::openMenu() {
    if (grab_ != Grab::none) return false;
    isMenuOpen_ = true;
    theirGrabbingKey_ = 0;
    return true;
}

void FakeX11Keyboard::swapAltAndSuper() {
    std::swap(map_.alt, map_.super);
    if (isListening_) send(Message::Kind::newKeymap, {.time = time}, 0);
}

void FakeX11Keyboard::noteVerdict(unsigned long pressTime, InterceptDecision verdict) {
    if (!verdicts_.emplace(pressTime, verdict).second) fault("asked twice about one press");
}

// The server

void FakeX11Keyboard::play() {
    while (!waiting_.empty() && !isStandingStill()) {
        const Movement next = waiting_.front();
        waiting_.pop_front();
        process(next);
    }
}

void FakeX11Keyboard::process(const Movement& movement) {
    using enum Message::Kind;
    // XInput's raw events carry no repeat of the server's making.
    if (!movement.isRepeat && (isListeningToKeys_ || grab_ != Grab::none))
        send(movement.isPress ? rawPress : rawRelease, movement, 0);
    const unsigned int before = modifiers();
    down_[movement.keyCode] = movement.isPress;
    const unsigned int locks = X11Keymap::capsLock | numLockBit;
    if (movement.isPress) locked_ ^= modifierOf(movement.keyCode) & locks;
    deliver(movement, before);
    if (isListening_ && modifiers() != before) send(newModifiers, movement, modifiers());
}

void FakeX11Keyboard::deliver(const Movement& movement, unsigned int before) {
    const X11KeyCombination pressed{.keyCode = movement.keyCode, .modifiers = before};
    const bool isFree = grab_ == Grab::none && !isMenuOpen_ && theirGrabbingKey_ == 0;
    if (isFree && movement.isPress) {
        const bool isTheirs = theirs.contains(pressed) && (theirsWin || !ours_.contains(pressed));
        if (isTheirs) theirGrabbingKey_ = movement.keyCode;
        if (!isTheirs && ours_.contains(pressed)) activate(movement);
    }
    if (grab_ != Grab::none) return deliverToUs(movement, before);
    if (!movement.isPress && movement.keyCode == theirGrabbingKey_) theirGrabbingKey_ = 0;
    show(movement);
}

void FakeX11Keyboard::activate(const Movement& movement) {
    grab_ = Grab::key;
    grabbingKey_ = movement.keyCode;
    grabTime_ = movement.time;
}

void FakeX11Keyboard::deliverToUs(const Movement& movement, unsigned int before) {
    using enum Message::Kind;
    send(movement.isPress ? grabbedPress : grabbedRelease, movement, before);
    if (grab_ == Grab::key && !movement.isPress && movement.keyCode == grabbingKey_) {
        endGrab();
        return;
    }
    freeze_ = Freeze::atEvent;
    frozenAt_ = movement;
}

void FakeX11Keyboard::send(Message::Kind kind, const Movement& movement, unsigned int before) {
    inbox.push_back({kind,
                     {.keyCode = movement.keyCode,
                      .modifiers = before,
                      .time = movement.time,
                      .device = device,
                      .isRepeat = movement.isRepeat}});
}

void FakeX11Keyboard::show(const Movement& movement) {
    if (!movement.isPress) return showRelease(movement);
    const bool isStray = movement.isRepeat && !seenDown_[movement.keyCode];
    if (isStray && !isExcused(movement))
        fault("others see a repeat of " + name(movement.keyCode) + ", which they have not seen pressed");
    if (!movement.isRepeat && seenDown_[movement.keyCode] && !isFlagKey(movement.keyCode))
        fault("others see " + name(movement.keyCode) + " pressed twice");
    if (!movement.isRepeat) seenDown_.set(movement.keyCode);
    append(seen, (isStray ? "stray~" : movement.isRepeat ? "~" : "+") + name(movement.keyCode));
}

/// What happens before we can have read of what came before it, and what goes
/// to another client's grab, is not for us to hold back.
bool FakeX11Keyboard::isExcused(const Movement& movement) const {
    return movement.isLate || excused_[movement.keyCode] || isMenuOpen_ || theirGrabbingKey_ != 0;
}

void FakeX11Keyboard::showRelease(const Movement& movement) {
    const bool isStray = !seenDown_[movement.keyCode] && !isFlagKey(movement.keyCode);
    if (isStray && !isExcused(movement))
        fault("others see the release of " + name(movement.keyCode) + ", which they have not seen pressed");
    seenDown_.reset(movement.keyCode);
    excused_.reset(movement.keyCode);
    append(seen, (isStray ? "stray-" : "-") + name(movement.keyCode));
}

void FakeX11Keyboard::endGrab() {
    grab_ = Grab::none;
    freeze_ = Freeze::none;
}

// The engine's verbs

void FakeX11Keyboard::listen(bool on) {
    isListening_ = on;
}

void FakeX11Keyboard::listenToKeys(bool on) {
    isListeningToKeys_ = on;
}

FakeX11Keyboard::Combinations FakeX11Keyboard::grab(const Combinations& combinations) {
    Combinations result;
    for (const X11KeyCombination& each : combinations) {
        if (theirs.contains(each)) continue;
        if (!ours_.insert(each).second) fault("grabbed twice: " + name(each.keyCode));
        result.push_back(each);
    }
    return result;
}

void FakeX11Keyboard::ungrab(const Combinations& combinations) {
    for (const X11KeyCombination& each : combinations)
        if (ours_.erase(each) == 0) fault("given back without having it: " + name(each.keyCode));
}

bool FakeX11Keyboard::grabKeyboard(unsigned long since) {
    if (isMenuOpen_ || theirGrabbingKey_ != 0) {
        // They see all that is released from now on.
        excuseHeldKeys();
        return false;
    }
    if (since != 0 && since < grabTime_) return false;
    if (freeze_ == Freeze::atEvent) fault("took the keyboard away from " + name(frozenAt_.keyCode));
    grab_ = Grab::keyboard;
    grabTime_ = since == 0 ? time : since;
    freeze_ = Freeze::withoutEvent;
    return true;
}

void FakeX11Keyboard::ungrabKeyboard() {
    if (grab_ == Grab::none) return;
    const bool isUnread = std::ranges::any_of(inbox, [&](const Message& each) {
        return each.key.time == frozenAt_.time
               && (each.kind == Message::Kind::grabbedPress || each.kind == Message::Kind::grabbedRelease);
    });
    if (freeze_ == Freeze::atEvent && isUnread) ++lostEvents_;
    missRelease();
    endGrab();
    play();
}

void FakeX11Keyboard::keep() {
    if (lostEvents_ > 0) {
        --lostEvents_;
        return;
    }
    if (!isStandingStill()) return fault("let a keyboard go that did not stand still");
    const Movement& at = frozenAt_;
    if (freeze_ == Freeze::atEvent && at.isPress && !at.isRepeat && !isFlagKey(at.keyCode) && at.keyCode != filler) {
        const auto verdict = verdicts_.find(at.time);
        if (verdict == verdicts_.end() || verdict->second == InterceptDecision::pass)
            fault("swallowed what was passed: " + name(at.keyCode));
    }
    missRelease();
    freeze_ = Freeze::none;
    play();
}

/// The others do not see the event at which the keyboard stands still.
void FakeX11Keyboard::missRelease() {
    if (freeze_ != Freeze::atEvent || frozenAt_.isPress || isFlagKey(frozenAt_.keyCode)) return;
    if (seenDown_[frozenAt_.keyCode]) fault("others miss the release of " + name(frozenAt_.keyCode));
}

void FakeX11Keyboard::replay() {
    if (lostEvents_ > 0) {
        --lostEvents_;
        return;
    }
    if (freeze_ != Freeze::atEvent) return fault("replayed without an event");
    const Movement at = frozenAt_;
    const auto verdict = verdicts_.find(at.time);
    if (verdict != verdicts_.end() && verdict->second == InterceptDecision::swallow)
        fault("passed what was swallowed: " + name(at.keyCode));
    endGrab();
    show(at);
    play();
}

void FakeX11Keyboard::tapFiller(unsigned int keyCode, int onDevice) {
    if (keyCode != filler || onDevice != device) fault("tapped another key than the filler");
    for (const bool isPress : {true, false})
        waiting_.push_back({keyCode, isPress, false, time, true});
    play();
}

}  // namespace quillmere::support
