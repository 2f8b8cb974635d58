#include "Quillmere/Platform/Linux/Tap/X11/X11KeyEngine.h"

namespace quillmere {

namespace {

/// XInput 2 has room for more keys than a core keyboard has.
bool isCoreKey(unsigned int keyCode) {
    return keyCode < X11Keys().size();
}

}  // namespace

// What is of interest

void X11KeyEngine::setInterest(const KeyInterest& interest, TimePoint now) {
    if (!interest.everyKey) {
        recordingEnd_.reset();
    } else if (!matcher_.interest().everyKey) {
        recordingEnd_ = now + longestRecording;
    }
    matcher_.setInterest(interest);
    updateListening();
    // A tap that was under way is none any more, and the next one finds a
    // program that knows Fn to be up.
    if (!matcher_.wantsFn() && isFnTold_) {
        isFnDown_ = false;
        tellOtherKey(lastTime_);
        tellFlags(lastTime_);
    }
    grabs_.set(matcher_.combinations());
    updateListening();
    updateRecording(now);
    keyboard_.flush();
}

void X11KeyEngine::resynchronize(TimePoint now) {
    if (!owner_.isEnabled()) return;
    if (isFnTold_ != isFnDown_) {
        // Whatever Fn did meanwhile is no tap.
        tellOtherKey(lastTime_);
        tellFlags(lastTime_);
        tellOtherKey(lastTime_);
    }
    updateRecording(now);
}

void X11KeyEngine::giveBack(TimePoint now) {
    setInterest({}, now);
    letKeyboardGo();
}

void X11KeyEngine::stopListening() {
    // A release that is still to come is found out when listening begins again.
    listenToKeys(false);
    listen(false);
    decided_.clear();
    hold_ = Hold::none;
}

// The feeds

void X11KeyEngine::updateListening() {
    // A press that the program knows of keeps the feeds alive until its release.
    listen(matcher_.wantsAnything() || told_.any());
    listenToKeys(isListening_ && needsRawKeys());
}

/// Raw events wake the process at every key, and tell it which. Without them a
/// press that the grabs miss goes unseen, so they are on in time for one: from
/// the first modifier of a shortcut on.
bool X11KeyEngine::needsRawKeys() const {
    const bool mayMiss = grabs_.areSomeMissing() || matcher_.isAnyShortcutBegun(modifiers_);
    return matcher_.wantsFn() || mayMiss || told_.any();
}

void X11KeyEngine::listen(bool on) {
    if (on == isListening_) return;
    isListening_ = on;
    keyboard_.listen(on);
    if (on) catchUp();
}

void X11KeyEngine::listenToKeys(bool on) {
    if (on == isListeningToKeys_) return;
    isListeningToKeys_ = on;
    keyboard_.listenToKeys(on);
    keyboard_.flush();
    isFnDown_ = false;
}

/// With what went unseen while nothing was listened to.
void X11KeyEngine::catchUp() {
    matcher_.setKeymap(keyboard_.readKeymap());
    modifiers_ = keyboard_.readModifiers().value_or(modifiers_);
    const X11Keys down = keyboard_.readKeysDown();
    swallowed_ &= down;
    for (unsigned int code = 0; code < told_.size(); ++code)
        if (!down[code]) tellRelease(code, lastTime_);
}

void X11KeyEngine::refreshKeymap() {
    matcher_.setKeymap(keyboard_.readKeymap());
    grabs_.set(matcher_.combinations());
}

// Deadlines

std::optional<X11KeyEngine::TimePoint> X11KeyEngine::deadline() const {
    std::optional<TimePoint> first;
    for (const auto& each : {keymapRefresh_, recordingRetry_, recordingEnd_})
        if (each && (!first || *each < *first)) first = each;
    return first;
}

void X11KeyEngine::tick(TimePoint now) {
    if (keymapRefresh_ && *keymapRefresh_ <= now) {
        keymapRefresh_.reset();
        refreshKeymap();
    }
    if (recordingEnd_ && *recordingEnd_ <= now) {
        recordingEnd_.reset();
        updateRecording(now);
    }
    if (recordingRetry_ && *recordingRetry_ <= now) updateRecording(now);
}

// The keyboard as a whole

void X11KeyEngine::updateRecording(TimePoint now, unsigned long since) {
    recordingRetry_.reset();
    const bool isWanted = mayRecord() && owner_.isEnabled();
    if (isWanted && hold_ != Hold::recording && !takeForRecording(since))
        recordingRetry_ = now + recordingRetryInterval;
    // Earlier, clients would see releases of keys whose press they have not seen.
    if (!isWanted && hold_ == Hold::recording && keyboard_.readKeysDown().none()) letKeyboardGo();
}

bool X11KeyEngine::takeForRecording(unsigned long since) {
    if (hold_ != Hold::swallowed) {
        if (!keyboard_.grabKeyboard(since)) return false;
        keyboard_.keep();
    }
    hold_ = Hold::recording;
    return true;
}

/// Clients shall not see a release of what they have not seen pressed, however
/// the grab that swallowed it has ended.
void X11KeyEngine::holdSwallowedKeys() {
    if (swallowed_.none() || !keyboard_.grabKeyboard(lastTime_)) return;
    hold_ = Hold::swallowed;
    // The keyboard stands still now. What is up already the clients have seen.
    swallowed_ &= keyboard_.readKeysDown();
    swallowed_.none() ? letKeyboardGo() : keyboard_.keep();
}

void X11KeyEngine::letKeyboardGo() {
    keyboard_.ungrabKeyboard();
    keyboard_.flush();
    hold_ = Hold::none;
}

// Raw events

void X11KeyEngine::rawPress(unsigned int keyCode, unsigned long time) {
    lastTime_ = time;
    if (!isCoreKey(keyCode)) return;
    // What became of the press before is no longer true; the grab's event,
    // should it come, is behind this one.
    swallowed_.reset(keyCode);
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

void X11KeyEngine::rawRelease(unsigned int keyCode, unsigned long time) {
    lastTime_ = time;
    if (!isCoreKey(keyCode)) return;
    if (X11KeyMatcher::isFn(keyCode)) {
        isFnDown_ = false;
        if (isFnTold_) tellFlags(time);
    }
    tellRelease(keyCode, time);
    if (hold_ == Hold::none) swallowed_.reset(keyCode);
    if (grabs_.areSomeMissing() && decided_.isMissing(keyCode)) grabs_.retry();
}

void X11KeyEngine::modifiersChanged(unsigned int modifiers, unsigned long time) {
    lastTime_ = time;
    modifiers_ = modifiers;
    // At once: the shortcut's key may be next.
    updateListening();
    if (isFnTold_) tellFlags(time);
}

void X11KeyEngine::keymapChanged(unsigned long time, TimePoint now) {
    lastTime_ = time;
    if (!keymapRefresh_) keymapRefresh_ = now + keymapSettles;
}

// Grabbed events

void X11KeyEngine::grabbedPress(const X11GrabbedKey& key, TimePoint now) {
    lastTime_ = key.time;
    if (!isCoreKey(key.keyCode)) return replayToClient(now);
    if (hold_ == Hold::none) {
        hold_ = Hold::key;
        grabbingKey_ = key.keyCode;
    }
    if (key.isRepeat) return grabbedRepeat(key, now);
    const auto verdict = decided_.arrive({.keyCode = key.keyCode, .time = key.time});
    if (isKeptInGrab(key.keyCode)) return keyboard_.keep();
    // Of a fast typist's next letter, pressed before the shortcut is released,
    // nothing must be lost. What is decided already stays so, though the answer
    // may have ended the interest: the key that ends a recording.
    if (!verdict && !matcher_.wantsPress(key.keyCode, key.modifiers)) return replayToClient(now);
    const bool isSwallowed =
        (verdict ? *verdict : decide(key.keyCode, key.modifiers, key.time)) == InterceptDecision::swallow;
    swallowed_[key.keyCode] = isSwallowed;
    isSwallowed ? keyboard_.keep() : replayToClient(now);
}

/// A repeat follows its press: a client that has seen the one sees all others,
/// or it would never see the release.
void X11KeyEngine::grabbedRepeat(const X11GrabbedKey& key, TimePoint now) {
    const bool isSwallowed = swallowed_[key.keyCode];
    if (isSwallowed && matcher_.wantsPress(key.keyCode, key.modifiers)) {
        KeyEventFields event = fields(KeyEventType::keyDown, key.modifiers, key.time);
        event.keyCode = X11KeyMatcher::virtualKey(key.keyCode);
        event.autorepeat = 1;
        owner_.tell(event);
    }
    // Recording keeps the repeats of whatever was down when it began.
    isSwallowed || hold_ == Hold::recording ? keyboard_.keep() : replayToClient(now);
}

void X11KeyEngine::grabbedRelease(const X11GrabbedKey& key, TimePoint now) {
    lastTime_ = key.time;
    if (!isCoreKey(key.keyCode)) return replayToClient(now);
    tellRelease(key.keyCode, key.time);
    const bool isSwallowed = swallowed_[key.keyCode];
    swallowed_.reset(key.keyCode);
    if (hold_ == Hold::key && key.keyCode == grabbingKey_) return grabbingKeyReleased(key);
    if (hold_ == Hold::swallowed && isSwallowed && swallowed_.none()) {
        letKeyboardGo();
        return tapFiller(key);
    }
    // Everything else has been pressed before the grab began, and the client
    // must see it end.
    if (!isSwallowed && !isKeptInGrab(key.keyCode)) return replayToClient(now);
    // Looked at while the keyboard stands still: the next release may be one
    // that a client waits for.
    const bool isRecordingOver = hold_ == Hold::recording && !mayRecord();
    isRecordingOver&& keyboard_.readKeysDown().none() ? letKeyboardGo() : keyboard_.keep();
}

/// The server ends the key's grab by itself. Allowing anything now could let
/// the next press go that stands still already.
void X11KeyEngine::grabbingKeyReleased(const X11GrabbedKey& key) {
    hold_ = Hold::none;
    tapFiller(key);
    // A second shortcut's key may still be down.
    holdSwallowedKeys();
}

/// Some keys are no client's business while our grab holds: passing them would
/// end it, and the shortcut's key would repeat into the client if it is still
/// down. Modifiers are such keys, and the filler of the shortcut before, when
/// the next press has been faster.
bool X11KeyEngine::isKeptInGrab(unsigned int keyCode) const {
    return matcher_.isFlagKey(keyCode) || keyCode == matcher_.keymap().unusedKeyCode();
}

/// The client sees this event as if there were no grab, which ends.
void X11KeyEngine::replayToClient(TimePoint now) {
    keyboard_.replay();
    hold_ = Hold::none;
    // The keyboard is taken back in the same write, since a key that comes
    // between reaches the client.
    updateRecording(now, lastTime_);
    if (hold_ == Hold::none) holdSwallowedKeys();
    keyboard_.flush();
}

void X11KeyEngine::tapFiller(const X11GrabbedKey& key) {
    const X11Keymap& keymap = matcher_.keymap();
    if (keymap.hasOptionOrCommand(key.modifiers)) keyboard_.tapFiller(keymap.unusedKeyCode(), key.device);
}

// The program

InterceptDecision X11KeyEngine::decide(unsigned int keyCode, unsigned int modifiers, unsigned long time) {
    KeyEventFields event = fields(KeyEventType::keyDown, modifiers, time);
    event.keyCode = X11KeyMatcher::virtualKey(keyCode);
    told_.set(keyCode);
    // While the keyboard stands still: the release must be heard of.
    updateListening();
    return owner_.ask(event);
}

void X11KeyEngine::tellRelease(unsigned int keyCode, unsigned long time) {
    if (!told_[keyCode]) return;
    told_.reset(keyCode);
    KeyEventFields event = fields(KeyEventType::keyUp, modifiers_, time);
    event.keyCode = X11KeyMatcher::virtualKey(keyCode);
    owner_.tell(event);
}

void X11KeyEngine::tellFlags(unsigned long time) {
    KeyEventFields event = fields(KeyEventType::flagsChanged, modifiers_, time);
    if (isFnDown_) event.flags |= KeyEventFlags::secondaryFn;
    if (owner_.tell(event)) isFnTold_ = isFnDown_;
}

void X11KeyEngine::tellOtherKey(unsigned long time) {
    owner_.tell(fields(KeyEventType::systemDefined, modifiers_, time));
}

KeyEventFields X11KeyEngine::fields(std::uint32_t type, unsigned int modifiers, unsigned long time) {
    return {.type = type, .flags = matcher_.keymap().flags(modifiers), .timestamp = clock_.nanoseconds(time)};
}

}  // namespace quillmere
