#pragma once

#include "Quillmere/Platform/Linux/X11/X11Connection.h"

namespace quillmere {

/// Taps a key that types nothing (XTEST). Many programs open their menu bar,
/// and many desktops their overview, when Alt or Super is pressed and released
/// with nothing in between; of a swallowed key they know nothing, so they are
/// given another one.
class X11FillerKey {
public:
    /// `connection` must outlive this.
    explicit X11FillerKey(X11Connection& connection);

    /// Taps the key on the given keyboard, the one that the user types on: on
    /// XTEST's own one, the server would change keyboards twice and every
    /// client would read the whole map again. Nothing without XTEST.
    void tap(unsigned int keyCode, int device);

private:
    X11Connection& connection_;
    bool isAvailable_;
};

}  // namespace quillmere
