#include "Quillmere/Platform/Linux/Tap/X11/X11KeyFilter.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

#include <chrono>

namespace quillmere {

namespace {

X11KeyFilter::TimePoint now() {
    return std::chrono::steady_clock::now();
}

}  // namespace

X11KeyFilter::X11KeyFilter(X11Connection& connection, VerdictPort& owner)
    : connection_(connection), keyboard_(connection), engine_(keyboard_, owner) {}

void X11KeyFilter::setInterest(const KeyInterest& interest) {
    processEvents();
    engine_.setInterest(interest, now());
}

void X11KeyFilter::resynchronize() {
    processEvents();
    engine_.resynchronize(now());
}

void X11KeyFilter::letGo() {
    engine_.giveBack(now());
    connection_.synchronize();
    processEvents();
    engine_.stopListening();
    connection_.synchronize();
}

void X11KeyFilter::processEvents() {
    while (!connection_.isLost() && XPending(connection_.display()) > 0) {
        XEvent event;
        XNextEvent(connection_.display(), &event);
        dispatch(event);
    }
    if (!connection_.isLost()) engine_.settle();
}

void X11KeyFilter::processDeadlines() {
    if (engine_.deadline()) engine_.tick(now());
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
    if (xkb.any.xkb_type == XkbStateNotify) {
        engine_.modifiersChanged(xkb.state.mods, xkb.any.time);
    } else {
        engine_.keymapChanged(xkb.any.time, now());
    }
}

void X11KeyFilter::dispatchRaw(int type, const void* data) {
    if (type != XI_RawKeyPress && type != XI_RawKeyRelease) return;
    const auto& raw = *static_cast<const XIRawEvent*>(data);
    if (raw.deviceid != connection_.masterKeyboard()) return;
    const auto keyCode = static_cast<unsigned int>(raw.detail);
    type == XI_RawKeyPress ? engine_.rawPress(keyCode, raw.time) : engine_.rawRelease(keyCode, raw.time);
}

void X11KeyFilter::dispatchGrabbed(int type, const void* data) {
    if (type != XI_KeyPress && type != XI_KeyRelease) return;
    const auto& event = *static_cast<const XIDeviceEvent*>(data);
    const X11GrabbedKey key{.keyCode = static_cast<unsigned int>(event.detail),
                            .modifiers = static_cast<unsigned int>(event.mods.effective),
                            .time = event.time,
                            .device = event.sourceid,
                            .isRepeat = (event.flags & XIKeyRepeat) != 0};
    type == XI_KeyPress ? engine_.grabbedPress(key, now()) : engine_.grabbedRelease(key, now());
}

}  // namespace quillmere
