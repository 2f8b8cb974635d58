#include "Quillmere/Platform/Linux/Tap/X11/X11KeyboardGrab.h"

#include "Quillmere/Platform/Linux/Tap/X11/X11InputMask.h"

#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

#include <algorithm>
#include <array>

namespace quillmere {

bool X11KeyboardGrab::take() {
    X11InputMask mask = X11InputMask::keysOfGrab(connection_.masterKeyboard());
    const int status = XIGrabDevice(connection_.display(), connection_.masterKeyboard(), connection_.root(),
                                    CurrentTime, None, XIGrabModeSync, XIGrabModeAsync, False, mask.get());
    isHeld_ = status == XIGrabSuccess;
    // It begins standing still, without an event to decide about.
    if (isHeld_) XIAllowEvents(connection_.display(), connection_.masterKeyboard(), XISyncDevice, CurrentTime);
    XFlush(connection_.display());
    return isHeld_;
}

void X11KeyboardGrab::release() {
    XIUngrabDevice(connection_.display(), connection_.masterKeyboard(), CurrentTime);
    XFlush(connection_.display());
    isHeld_ = false;
}

bool X11KeyboardGrab::areAllKeysUp() const {
    std::array<char, 32> keys{};
    XQueryKeymap(connection_.display(), keys.data());
    return std::ranges::all_of(keys, [](char eight) { return eight == 0; });
}

}  // namespace quillmere
