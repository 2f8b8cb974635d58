#pragma once

#include <xcb/xcb.h>

#include <QRect>

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace quillmere {

/// The X connection that Qt holds, for what Qt has no function for. A value;
/// valid as long as the application object. Main thread only.
class QtX11 {
public:
    /// None where the display is not X11.
    static std::optional<QtX11> current();

    xcb_connection_t* connection() const { return connection_; }
    xcb_window_t root() const { return root_; }

    /// The atom of this name; none when the server cannot tell. A round trip.
    xcb_atom_t atom(const char* name) const;
    /// Several, in one round trip.
    template <std::size_t count>
    std::array<xcb_atom_t, count> atoms(const std::array<const char*, count>& names) const {
        std::array<xcb_atom_t, count> result{};
        internAtoms(names, result);
        return result;
    }
    /// The selection of this name that exists once per screen, such as
    /// "_NET_WM_CM_S" (EWMH) or "_NET_SYSTEM_TRAY_S" (system tray protocol).
    xcb_atom_t screenSelection(const char* prefix) const;
    /// Whether some client owns the selection. A round trip.
    bool isOwned(xcb_atom_t selection) const;
    /// What the window manager calls itself (EWMH); empty when there is none
    /// or it does not tell. Some round trips.
    std::string windowManagerName() const;

    /// The elements of a window's 32-bit property, no more than some thousand;
    /// empty when the window or the property is not there. A round trip.
    std::vector<std::uint32_t> numbers(xcb_window_t window, xcb_atom_t property) const;
    /// Those of several windows, in their order. One round trip for all.
    std::vector<std::vector<std::uint32_t>> numbers(std::span<const xcb_window_t> windows, xcb_atom_t property) const;
    /// Where a window is on the X screen, in pixels; none when it is gone. A
    /// round trip.
    std::optional<QRect> frame(xcb_window_t window) const;
    /// The window with the keyboard; none where the root window, or no window
    /// at all, has it. A round trip.
    xcb_window_t focusedWindow() const;

private:
    void internAtoms(std::span<const char* const> names, std::span<xcb_atom_t> result) const;

    QtX11(xcb_connection_t* connection, int screenNumber, xcb_window_t root);

    xcb_connection_t* connection_;
    int screenNumber_;
    xcb_window_t root_;
};

}  // namespace quillmere
