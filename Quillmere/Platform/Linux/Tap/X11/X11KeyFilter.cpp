#include "Quillmere/Platform/Linux/Tap/X11/X11KeyFilter.h"

#include "Quillmere/Platform/Linux/Tap/X11/X11InputMask.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

#include <algorithm>
#include <array>

namespace quillmere {

namespace {

// Changing a keyboard's map makes a burst of notifications.
constexpr std::chrono::milliseconds keymapSettles{30};

// How often to look whether another client has given the keyboard back.
constexpr std::chrono::milliseconds recordingRetryInterval{100};

constexpr unsigned long xkbMapChanges = XkbKeySymsMask | XkbModifierMapMask | XkbVirtualModsMask | XkbVirtualModMapMask;

}  // namespace

X11KeyFilter::X11KeyFilter(X11Connection& connection, VerdictExchange& exchange)
    : connection_(connection), exchange_(exchange), grabs_(connection), recording_(connection), filler_(connection) {}

void X11KeyFilter::setInterest(const KeyInterest& interest) {
    matcher_.setInterest(interest);
    applyInterest();
}

void X11KeyFilter::applyInterest() {
    updateListening();
    // A tap that was under way is none any more, and the next one finds a
    // callback that knows Fn to be up.
    if (!matcher_.wantsFn() && isFnTold_) {
        isFnDown_ = false;
        tellOtherKey(lastTime_);
        tellFlags(lastTime_);
    }
    grabs_.set(matcher_.combinations());
    updateListening();
    updateRecording();
    XFlush(connection_.display());
}

void X11KeyFilter::letGo() {
    setInterest({});
    recording_.release();
    grabbingKey_ = 0;
    connection_.synchronize();
    processEvents();
    // A release that is still to come is found out by the next reading.
    listenToKeys(false);
    listen(false);
    decided_.clear();
    connection_.synchronize();
}

void X11KeyFilter::updateListening() {
    // A press that the callback knows of keeps the feeds alive until its release.
    listen(matcher_.wantsAnything() || told_.any());
    listenToKeys(isListening_ && needsRawKeys());
}

/// Raw events wake the process at every key, and tell it which. Without them a
/// press that the grabs miss goes unseen, so they are on in time for one: from
/// the first modifier of a shortcut on.
bool X11KeyFilter::needsRawKeys() const {
    const bool mayMiss = grabs_.areSomeMissing() || matcher_.isAnyShortcutBegun(modifiers_);
    return matcher_.wantsFn() || mayMiss || told_.any();
}

void X11KeyFilter::listen(bool on) {
    if (on == isListening_) return;
    isListening_ = on;
    Display* display = connection_.display();
    const auto select = [&](unsigned int type, unsigned long details) {
        XkbSelectEventDetails(display, XkbUseCoreKbd, type, details, on ? details : 0);
    };
    select(XkbStateNotify, XkbModifierStateMask);
    select(XkbMapNotify, xkbMapChanges);
    select(XkbNewKeyboardNotify, XkbAllNewKeyboardEventsMask);
    if (on) readKeyboard();
}

void X11KeyFilter::listenToKeys(bool on) {
    if (on == isListeningToKeys_) return;
    isListeningToKeys_ = on;
    X11InputMask raw = on ? X11InputMask(XIAllMasterDevices, {XI_RawKeyPress, XI_RawKeyRelease})
                          : X11InputMask(XIAllMasterDevices, {});
    XISelectEvents(connection_.display(), connection_.root(), raw.get(), 1);
    XFlush(connection_.display());
    down_.reset();
    isFnDown_ = false;
}

/// Catches up with what went unseen while nothing was listened to.
void X11KeyFilter::readKeyboard() {
    matcher_.setKeymap(X11Keymap::read(connection_.display()));
    XkbStateRec state{};
    if (XkbGetState(connection_.display(), XkbUseCoreKbd, &state) == Success) modifiers_ = state.mods;
    std::array<char, 32> keys{};
    XQueryKeymap(connection_.display(), keys.data());
    for (unsigned int code = 0; code < told_.size(); ++code) {
        const bool isDown = ((static_cast<unsigned char>(keys[code / 8]) >> (code % 8)) & 1U) != 0;
        if (isDown) continue;
        swallowed_.reset(code);
        tellRelease(code, lastTime_);
    }
}

void X11KeyFilter::refreshKeymap() {
    matcher_.setKeymap(X11Keymap::read(connection_.display()));
    grabs_.set(matcher_.combinations());
}

void X11KeyFilter::updateRecording() {
    recordingRetry_.reset();
    const bool isWanted = matcher_.interest().everyKey && exchange_.isEnabled();
    if (isWanted && !recording_.isHeld()) {
        if (recording_.take()) {
            grabbingKey_ = 0;
        } else {
            recordingRetry_ = std::chrono::steady_clock::now() + recordingRetryInterval;
        }
    }
    // Earlier, clients would see releases of keys whose press they have not seen.
    if (!isWanted && recording_.isHeld() && recording_.areAllKeysUp()) recording_.release();
}

void X11KeyFilter::resynchronize() {
    if (!exchange_.isEnabled()) return;
    if (isFnTold_ != isFnDown_) {
        // Whatever Fn did meanwhile is no tap.
        tellOtherKey(lastTime_);
        tellFlags(lastTime_);
        tellOtherKey(lastTime_);
    }
    updateRecording();
}

void X11KeyFilter::processEvents() {
    while (!connection_.isLost() && XPending(connection_.display()) > 0) {
        XEvent event;
        XNextEvent(connection_.display(), &event);
        dispatch(event);
    }
    if (!connection_.isLost()) updateListening();
}

std::optional<X11KeyFilter::TimePoint> X11KeyFilter::deadline() const {
    std::optional<TimePoint> first;
    for (const auto& each : {keymapRefresh_, recordingRetry_})
        if (each && (!first || *each < *first)) first = each;
    return first;
}

void X11KeyFilter::processDeadlines() {
    const TimePoint now = std::chrono::steady_clock::now();
    if (keymapRefresh_ && *keymapRefresh_ <= now) {
        keymapRefresh_.reset();
        refreshKeymap();
    }
    if (recordingRetry_ && *recordingRetry_ <= now) updateRecording();
}

void X11KeyFilter::dispatch(XEvent& event) {
    if (event.type == connection_.xkbEventBase()) {
        dispatchXkb(event);
    } else if (event.type == MappingNotify) {
        XRefreshKeyboardMapping(&event.xmapping);
    } else if (event.type == GenericEvent && event.xcookie.extension == connection_.xinputOpcode()
               && XGetEventData(connection_.display(), &event.xcookie) != 0) {
        dispatchRaw(event.xcookie.evtype, event.xcookie.data);
        dispatchGrabbed(event.xcookie.evtype, event.xcookie.data);
        XFreeEventData(connection_.display(), &event.xcookie);
    }
}

void X11KeyFilter::dispatchXkb(const XEvent& event) {
    const auto& xkb = reinterpret_cast<const XkbEvent&>(event);
    lastTime_ = xkb.any.time;
    if (xkb.any.xkb_type == XkbStateNotify) {
        modifiersChanged(xkb.state.mods, xkb.any.time);
    } else if (!keymapRefresh_) {
        keymapRefresh_ = std::chrono::steady_clock::now() + keymapSettles;
    }
}

void X11KeyFilter::dispatchRaw(int type, const void* data) {
    if (type != XI_RawKeyPress && type != XI_RawKeyRelease) return;
    const auto& raw = *static_cast<const XIRawEvent*>(data);
    lastTime_ = raw.time;
    const auto keyCode = static_cast<unsigned int>(raw.detail);
    // XInput 2 has room for more keys than a core keyboard has.
    if (raw.deviceid != connection_.masterKeyboard() || keyCode >= down_.size()) return;
    type == XI_RawKeyPress ? rawPress(keyCode, raw.time) : rawRelease(keyCode, raw.time);
}

void X11KeyFilter::dispatchGrabbed(int type, const void* data) {
    if (type != XI_KeyPress && type != XI_KeyRelease) return;
    const auto& event = *static_cast<const XIDeviceEvent*>(data);
    lastTime_ = event.time;
    const GrabbedKey key{.keyCode = static_cast<unsigned int>(event.detail),
                         .modifiers = static_cast<unsigned int>(event.mods.effective),
                         .time = event.time,
                         .device = event.sourceid,
                         .isRepeat = (event.flags & XIKeyRepeat) != 0};
    if (key.keyCode >= down_.size()) return replayToClient();
    type == XI_KeyPress ? grabbedPress(key) : grabbedRelease(key);
}

void X11KeyFilter::rawPress(unsigned int keyCode, unsigned long time) {
    down_.set(keyCode);
    if (X11KeyMatcher::isFn(keyCode)) {
        isFnDown_ = true;
        if (matcher_.wantsFn()) tellFlags(time);
        return;
    }
    if (keyCode == matcher_.keymap().unusedKeyCode()) return;
    if (isFnTold_ && !matcher_.isFlagKey(keyCode)) tellOtherKey(time);
    if (!matcher_.wantsPress(keyCode, modifiers_)) return;
    decided_.add({.keyCode = keyCode, .time = time}, decide(keyCode, modifiers_, time));
}

void X11KeyFilter::rawRelease(unsigned int keyCode, unsigned long time) {
    down_.reset(keyCode);
    if (X11KeyMatcher::isFn(keyCode)) {
        isFnDown_ = false;
        if (isFnTold_) tellFlags(time);
    }
    tellRelease(keyCode, time);
    if (!isHoldingKeyboard()) swallowed_.reset(keyCode);
    if (grabs_.areSomeMissing() && decided_.isMissing(keyCode)) grabs_.retry();
}

void X11KeyFilter::modifiersChanged(unsigned int modifiers, unsigned long time) {
    modifiers_ = modifiers;
    // At once: the shortcut's key may be next.
    updateListening();
    if (isFnTold_) tellFlags(time);
}

void X11KeyFilter::grabbedPress(const GrabbedKey& key) {
    if (!isHoldingKeyboard()) grabbingKey_ = key.keyCode;
    if (key.isRepeat) return grabbedRepeat(key);
    const auto verdict = decided_.arrive({.keyCode = key.keyCode, .time = key.time});
    if (isKeptInGrab(key.keyCode)) return keepForUs();
    // Of a fast typist's next letter, pressed before the shortcut is released,
    // nothing must be lost. Replaying it ends our grab, so the shortcut's
    // release will reach the client, which ignores it.
    if (!matcher_.wantsPress(key.keyCode, key.modifiers)) return replayToClient();
    const bool isSwallowed =
        (verdict ? *verdict : decide(key.keyCode, key.modifiers, key.time)) == InterceptDecision::swallow;
    swallowed_[key.keyCode] = isSwallowed;
    isSwallowed ? keepForUs() : replayToClient();
}

/// A repeat follows its press: a client that has seen the one sees all others,
/// or it would never see the release.
void X11KeyFilter::grabbedRepeat(const GrabbedKey& key) {
    if (swallowed_[key.keyCode] && matcher_.wantsPress(key.keyCode, key.modifiers)) {
        KeyEventFields event = fields(KeyEventType::keyDown, key.modifiers, key.time);
        event.keyCode = X11KeyMatcher::virtualKey(key.keyCode);
        event.autorepeat = 1;
        exchange_.tell(event);
    }
    // Recording keeps the repeats of whatever was down when it began.
    swallowed_[key.keyCode] || recording_.isHeld() ? keepForUs() : replayToClient();
}

/// Some keys are no client's business while our grab holds: passing them would
/// end it, and the shortcut's key would repeat into the client if it is still
/// down. Modifiers are such keys, and the filler of the shortcut before, when
/// the next press has been faster.
bool X11KeyFilter::isKeptInGrab(unsigned int keyCode) const {
    return matcher_.isFlagKey(keyCode) || keyCode == matcher_.keymap().unusedKeyCode();
}

InterceptDecision X11KeyFilter::decide(unsigned int keyCode, unsigned int modifiers, unsigned long time) {
    KeyEventFields event = fields(KeyEventType::keyDown, modifiers, time);
    event.keyCode = X11KeyMatcher::virtualKey(keyCode);
    told_.set(keyCode);
    // While the keyboard stands still: the release must be heard of.
    updateListening();
    return exchange_.ask(event);
}

void X11KeyFilter::grabbedRelease(const GrabbedKey& key) {
    tellRelease(key.keyCode, key.time);
    const bool isSwallowed = swallowed_[key.keyCode];
    swallowed_.reset(key.keyCode);
    if (key.keyCode == grabbingKey_) {
        // The server ends this grab by itself. Allowing anything now could let
        // the next press go that stands still already.
        grabbingKey_ = 0;
        if (matcher_.keymap().hasOptionOrCommand(key.modifiers))
            filler_.tap(matcher_.keymap().unusedKeyCode(), key.device);
        return;
    }
    const bool isOurs = isSwallowed || isKeptInGrab(key.keyCode);
    // Everything else has been pressed before the grab began, and the client
    // must see it end.
    isOurs ? keepForUs() : replayToClient();
    if (recording_.isHeld() && !matcher_.interest().everyKey) updateRecording();
}

/// No client sees this event, and the keyboard goes on to the next one that is
/// for us.
void X11KeyFilter::keepForUs() {
    XIAllowEvents(connection_.display(), connection_.masterKeyboard(), XISyncDevice, CurrentTime);
    XFlush(connection_.display());
}

/// The client sees this event as if there were no grab; the grab ends with it.
void X11KeyFilter::replayToClient() {
    XIAllowEvents(connection_.display(), connection_.masterKeyboard(), XIReplayDevice, CurrentTime);
    grabbingKey_ = 0;
    recording_.forget();
    // Sent together, since no key must come between: it would reach the client.
    updateRecording();
    XFlush(connection_.display());
}

void X11KeyFilter::tellRelease(unsigned int keyCode, unsigned long time) {
    if (!told_[keyCode]) return;
    told_.reset(keyCode);
    KeyEventFields event = fields(KeyEventType::keyUp, modifiers_, time);
    event.keyCode = X11KeyMatcher::virtualKey(keyCode);
    exchange_.tell(event);
}

void X11KeyFilter::tellFlags(unsigned long time) {
    KeyEventFields event = fields(KeyEventType::flagsChanged, modifiers_, time);
    if (isFnDown_) event.flags |= KeyEventFlags::secondaryFn;
    if (exchange_.tell(event)) isFnTold_ = isFnDown_;
}

void X11KeyFilter::tellOtherKey(unsigned long time) {
    exchange_.tell(fields(KeyEventType::systemDefined, modifiers_, time));
}

KeyEventFields X11KeyFilter::fields(std::uint32_t type, unsigned int modifiers, unsigned long time) {
    return {.type = type, .flags = matcher_.keymap().flags(modifiers), .timestamp = clock_.nanoseconds(time)};
}

}  // namespace quillmere
