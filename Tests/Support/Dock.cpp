#include "Tests/Support/Dock.h"

#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <algorithm>
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
    open(QRect(0, 0, connection_.screenSize().width(), height));
    if (!waitUntil([&] { return isKeptFree(connection_, height); }))
        throw SupportError("the window manager ignores the dock");
}

Dock::Dock(const std::string& display, const QRect& frame) : connection_(display) {
    open(frame);
    const auto isKnown = [this] {
        const auto clients = connection_.numbers(connection_.root(), "_NET_CLIENT_LIST", 64);
        return std::ranges::find(clients, window_) != clients.end();
    };
    if (!waitUntil(isKnown)) throw SupportError("the window manager ignores the dock");
}

void Dock::open(const QRect& frame) {
    window_ = XCreateSimpleWindow(connection_.display(), connection_.root(), frame.x(), frame.y(),
                                  static_cast<unsigned int>(frame.width()), static_cast<unsigned int>(frame.height()),
                                  0, 0, 0x404040);
    const Atom type = connection_.atom("_NET_WM_WINDOW_TYPE_DOCK");
    XChangeProperty(connection_.display(), window_, connection_.atom("_NET_WM_WINDOW_TYPE"), XA_ATOM, 32,
                    PropModeReplace, reinterpret_cast<const unsigned char*>(&type), 1);
    // left, right, top, bottom, then the stretch along each edge
    const auto height = static_cast<unsigned long>(frame.bottom()) + 1;
    const auto begin = static_cast<unsigned long>(frame.left());
    const auto end = static_cast<unsigned long>(frame.right());
    const std::array<unsigned long, 12> strut{0, 0, height, 0, 0, 0, 0, 0, begin, end, 0, 0};
    XChangeProperty(connection_.display(), window_, connection_.atom("_NET_WM_STRUT_PARTIAL"), XA_CARDINAL, 32,
                    PropModeReplace, reinterpret_cast<const unsigned char*>(strut.data()),
                    static_cast<int>(strut.size()));
    XMapWindow(connection_.display(), window_);
    connection_.synchronize();
}

Dock::~Dock() {
    XDestroyWindow(connection_.display(), window_);
}

}  // namespace quillmere::support
