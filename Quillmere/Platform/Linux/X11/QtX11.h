#pragma once

#include <xcb/xcb.h>

#include <optional>
#include <string>

namespace quillmere {

/// The X connection that Qt holds, for what Qt has no function for. A value;
/// valid as long as the application object. Main thread only.
class QtX11 {
public:
    /// None where the display is not X11.
    static std::optional<QtX11> current();

    xcb_connection_t* connection() const { return connection_; }
    int screenNumber() const { return screenNumber_; }
    xcb_window_t root() const { return root_; }

    /// The atom of this name; none when the server cannot tell. A round trip.
    xcb_atom_t atom(const char* name) const;
    /// The selection of this name that exists once per screen, such as
    /// "_NET_WM_CM_S" (EWMH) or "_NET_SYSTEM_TRAY_S" (system tray protocol).
    xcb_atom_t screenSelection(const char* prefix) const;
    /// Whether some client owns the selection. A round trip.
    bool isOwned(xcb_atom_t selection) const;
    /// What the window manager calls itself (EWMH); empty when there is none
    /// or it does not tell. Some round trips.
    std::string windowManagerName() const;

private:
    std::string property(xcb_window_t window, const char* name) const;

    QtX11(xcb_connection_t* connection, int screenNumber, xcb_window_t root);

    xcb_connection_t* connection_;
    int screenNumber_;
    xcb_window_t root_;
};

}  // namespace quillmere
