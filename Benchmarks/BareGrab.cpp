// The least that a program can do which switches layouts by a key grab: takes
// Super-Space from all others, goes to the other of two layouts at each press
// and lets the keyboard go on. What the program's own switch is measured
// against. Writes one line to the descriptor named by its argument when it
// holds the grab.

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>
#include <X11/keysym.h>

#include <unistd.h>

#include <array>
#include <cstdlib>

namespace {

// What X.Org's servers number the master keyboard that they begin with.
constexpr int masterKeyboard = 3;

bool grab(Display* display) {
    std::array<unsigned char, XIMaskLen(XI_LASTEVENT)> bits{};
    XISetMask(bits.data(), XI_KeyPress);
    XISetMask(bits.data(), XI_KeyRelease);
    XIEventMask mask{.deviceid = masterKeyboard, .mask_len = bits.size(), .mask = bits.data()};
    XIGrabModifiers modifiers{.modifiers = Mod4Mask, .status = 0};
    const int key = XKeysymToKeycode(display, XK_space);
    return XIGrabKeycode(display, masterKeyboard, key, DefaultRootWindow(display), XIGrabModeSync, XIGrabModeAsync,
                         False, &mask, 1, &modifiers)
           == 0;
}

bool isPress(Display* display, XEvent& event) {
    if (event.type != GenericEvent || XGetEventData(display, &event.xcookie) == 0) return false;
    const bool result = event.xcookie.evtype == XI_KeyPress;
    XFreeEventData(display, &event.xcookie);
    return result;
}

}  // namespace

int main(int argc, char** argv) {
    Display* const display = XOpenDisplay(nullptr);
    int major = 2;
    int minor = 2;
    if (display == nullptr || XIQueryVersion(display, &major, &minor) != Success || !grab(display)) return EXIT_FAILURE;
    if (argc > 1 && write(std::atoi(argv[1]), ".\n", 2) != 2) return EXIT_FAILURE;
    for (unsigned int group = 0;;) {
        XEvent event;
        XNextEvent(display, &event);
        if (!isPress(display, event)) continue;
        group = 1 - group;
        XkbLockGroup(display, XkbUseCoreKbd, group);
        XIAllowEvents(display, masterKeyboard, XISyncDevice, CurrentTime);
        XFlush(display);
    }
}
