// What a person has a hotkey daemon run: a program that puts the X server's
// other one of two layouts into use, and ends.

#include <X11/XKBlib.h>
#include <X11/Xlib.h>

#include <cstdlib>

int main() {
    Display* const display = XOpenDisplay(nullptr);
    XkbStateRec state{};
    if (display == nullptr || XkbGetState(display, XkbUseCoreKbd, &state) != Success) return EXIT_FAILURE;
    XkbLockGroup(display, XkbUseCoreKbd, state.group == 0 ? 1 : 0);
    XCloseDisplay(display);
    return EXIT_SUCCESS;
}
