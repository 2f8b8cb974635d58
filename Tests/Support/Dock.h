#pragma once

#include "Tests/Support/XConnection.h"

#include <QRect>

#include <string>

namespace quillmere::support {

/// A panel along an upper edge that no window may cover.
class Dock {
public:
    /// Along the screen's. Waits until the window manager keeps `height` pixels
    /// free for it.
    Dock(const std::string& display, int height);
    /// Along a monitor's, with `frame` on the screen. Waits until the window
    /// manager knows it.
    Dock(const std::string& display, const QRect& frame);
    ~Dock();
    Dock(const Dock&) = delete;
    Dock& operator=(const Dock&) = delete;

private:
    void open(const QRect& frame);

    XConnection connection_;
    unsigned long window_ = 0;
};

}  // namespace quillmere::support
