#include "Tests/Mac/Doubles/WindowServer.h"

#include "Tests/Mac/Doubles/Misuse.h"
#include "Tests/Mac/Doubles/RunLoop.h"

#include <CoreGraphics/CoreGraphics.h>

#include <utility>

namespace windowserver {

bool isTrusted = true;
bool isSlow = false;

namespace {

// Key down, key up, flags changed, system-defined.
constexpr CGEventMask keyboardMask = 0x5C00;

struct Tap : runloop::Port {
    ~Tap() override;
    CGEventMask mask = 0;
    CGEventTapCallBack callback = nullptr;
    void* userInfo = nullptr;
    bool isEnabled = false;
};

Tap* tap = nullptr;
int made = 0;

Tap::~Tap() {
    if (tap == this) tap = nullptr;
}

Tap* tapOf(CFMachPortRef port) {
    misuse::stopOffMainThread("an event tap");
    return static_cast<Tap*>(cf::object(port, cf::Kind::port));
}

bool isServed() {
    return tap && tap->isValid && tap->isServed;
}

/// Turns the tap off, and tells it: whatever its mask, and without an event.
void disable(CGEventType reason) {
    tap->isEnabled = false;
    if (isServed()) tap->callback(nullptr, reason, nullptr, tap->userInfo);
}

}  // namespace

Fate post(const Event& event) {
    const bool isWanted = isServed() && tap->isEnabled && (tap->mask >> event.type & 1U) != 0;
    if (!isWanted) return Fate::delivered;
    Event sent = event;
    const auto ref = reinterpret_cast<CGEventRef>(&sent);
    const CGEventRef answer = tap->callback(nullptr, static_cast<CGEventType>(event.type), ref, tap->userInfo);
    misuse::stopIf(answer && answer != ref, "an event that is another");
    if (std::exchange(isSlow, false)) {
        // The key was let through long ago.
        disable(kCGEventTapDisabledByTimeout);
        return Fate::delivered;
    }
    return answer ? Fate::delivered : Fate::swallowed;
}

void disableByUserInput() {
    disable(kCGEventTapDisabledByUserInput);
}

bool hasTap() {
    return tap && tap->isValid;
}

bool isTapEnabled() {
    return hasTap() && tap->isEnabled;
}

int tapsMade() {
    return made;
}

void reset() {
    isTrusted = true;
    isSlow = false;
    made = 0;
}

}  // namespace windowserver

using namespace windowserver;

extern "C" {

CFMachPortRef CGEventTapCreate(CGEventTapLocation location, CGEventTapPlacement place, CGEventTapOptions options,
                               CGEventMask mask, CGEventTapCallBack callback, void* userInfo) {
    misuse::stopOffMainThread("CGEventTapCreate");
    misuse::stopIf(location != kCGHIDEventTap, "a tap behind the window server");
    misuse::stopIf(place != kCGHeadInsertEventTap, "a tap behind others");
    misuse::stopIf(options != kCGEventTapOptionDefault, "a tap that only listens");
    misuse::stopIf(mask != keyboardMask, "a tap for other events than those of the keyboard");
    misuse::stopIf(!callback || !userInfo, "a tap without an owner");
    if (!isTrusted) return nullptr;
    ++made;
    tap = new Tap;
    // It goes on asking a port that nobody else knows any more.
    CFRetain(tap);
    tap->isHeld = true;
    tap->mask = mask;
    tap->callback = callback;
    tap->userInfo = userInfo;
    return cf::as<CFMachPortRef>(tap);
}

void CGEventTapEnable(CFMachPortRef port, bool enable) {
    tapOf(port)->isEnabled = enable;
}

CGEventFlags CGEventGetFlags(CGEventRef event) {
    return reinterpret_cast<Event*>(event)->flags;
}

CGEventTimestamp CGEventGetTimestamp(CGEventRef event) {
    return reinterpret_cast<Event*>(event)->timestamp;
}

std::int64_t CGEventGetIntegerValueField(CGEventRef ref, CGEventField field) {
    const auto& event = *reinterpret_cast<Event*>(ref);
    const bool isDown = event.type == kCGEventKeyDown;
    switch (field) {
        case kCGKeyboardEventAutorepeat:
            misuse::stopIf(!isDown, "the repetition of what is no key press");
            return event.autorepeat;
        case kCGKeyboardEventKeycode:
            misuse::stopIf(!isDown && event.type != kCGEventKeyUp, "the key of what is no key's event");
            return event.keyCode;
    }
    misuse::stop("a field that is none of a keyboard's");
}

}  // extern "C"
