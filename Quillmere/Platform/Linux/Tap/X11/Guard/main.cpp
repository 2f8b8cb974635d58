#include "Quillmere/Platform/Linux/Tap/X11/Guard/Guard.h"

#include <X11/Xlib.h>
#include <unistd.h>

#include <cstdlib>

// Started by the tap, with a socket to it in place of the standard input and a
// resource of its connection as the argument.
int main(int argc, char** argv) {
    constexpr int usage = 2;
    if (argc != 2) return usage;
    const unsigned long resource = std::strtoul(argv[1], nullptr, 16);
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr || resource == 0) return EXIT_FAILURE;
    quillmere::guard::Guard(display, STDIN_FILENO, resource).run();
    XCloseDisplay(display);
    return EXIT_SUCCESS;
}
