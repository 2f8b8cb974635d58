#pragma once

#include <string>
#include <vector>

namespace quillmere {

/// The desktop session that the program runs in, as its environment tells: the
/// one place that reads these variables, so that no two parts of the program
/// can differ about them. A value.
struct LinuxSession {
    /// A Wayland compositor has the keyboard and the windows (WAYLAND_DISPLAY);
    /// an X server beside it is there for old programs only.
    bool hasWayland = false;

    /// There is an X server (DISPLAY): the desktop's own or, with `hasWayland`,
    /// one for old programs.
    bool hasX11 = false;

    /// The socket for commands of sway and its like (SWAYSOCK); empty elsewhere.
    std::string swaySocket;

    /// The folder of the sockets of the running Hyprland
    /// (HYPRLAND_INSTANCE_SIGNATURE); empty elsewhere.
    std::string hyprlandFolder;

    /// The names of the desktop, the closest first, as "ubuntu", "GNOME"
    /// (XDG_CURRENT_DESKTOP); empty where the desktop gives none.
    std::vector<std::string> desktops;

    /// Whether the X server is the desktop's own, which has the keyboard.
    bool isX11() const { return hasX11 && !hasWayland; }

    /// This process's own. A variable that is empty counts as missing. Any
    /// thread, while no other changes the environment.
    static LinuxSession current();
};

}  // namespace quillmere
