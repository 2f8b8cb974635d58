#pragma once

#include "Tests/Support/XConnection.h"

#include <string>

namespace quillmere::support {

/// A panel along the top edge of the screen that no window may cover.
class Dock {
public:
    /// Waits until the window manager keeps `height` pixels free for it.
    Dock(const std::string& display, int height);
    ~Dock();
    Dock(const Dock&) = delete;
    Dock& operator=(const Dock&) = delete;

private:
    XConnection connection_;
    unsigned long window_;
};

}  // namespace quillmere::support
