#include "Tests/Support/Dock.h"

#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <array>

namespace quillmere::support {

namespace {

/// The first desktop's free area begins below the dock.
bool isKeptFree(const XConnection& connection, int height) {
    const auto area = connection.numbers(connection.root(), "_NET_WORKAREA", 4);
    return area.size() == 4 && area[1] == static_cast<unsigned long>(height);
}

}  // namespace

Dock::Dock(const std::string& display, int height) : connection_(display) {
    const int width = connection_.screenSize().width();
    window_ = XCreateSimpleWindow(connection_.display(), connection_.root(), 0, 0, static_cast<unsigned int>(width),
                                  static_cast<unsigned int>(height), 0, 0, 0x404040);
    const Atom type = connection_.atom("_NET_WM_WINDOW_TYPE_DOCK");
    XChangeProperty(connection_.display(), window_, connection_.atom("_NET_WM_WINDOW_TYPE"), XA_ATOM, 32,
                    PropModeReplace, reinterpret_cast<const unsigned char*>(&type), 1);
    // left, right, top, bottom, then the stretch along each edge
    const std::array<unsigned long, 12> strut{0, 0, static_cast<unsigned long>(height),    0, 0, 0, 0,
                                              0, 0, static_cast<unsigned long>(width - 1), 0, 0};
    XChangeProperty(connection_.display(), window_, connection_.atom("_NET_WM_STRUT_PARTIAL"), XA_CARDINAL, 32,
                    PropModeReplace, reinterpret_cast<const unsigned char*>(strut.data()),
                    static_cast<int>(strut.size()));
    XMapWindow(connection_.display(), window_);
    connection_.synchronize();
    if (!waitUntil([&] { return isKeptFree(connection_, height); }))
        throw SupportError("the window manager ignores the dock");
}

Dock::~Dock() {
    XDestroyWindow(connection_.display(), window_);
}

}  // namespace quillmere::support
