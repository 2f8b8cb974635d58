#pragma once

#include "Quillmere/Platform/Finding.h"
#include "Quillmere/Platform/Linux/Doctor/ServiceAccess.h"
#include "Quillmere/Platform/Linux/LinuxSession.h"

#include <vector>

namespace quillmere {

/// What there is to catch keys with.
struct TapChoices {
    LinuxSession session;
    bool hasX11Tap = false;    ///< the X server lends its keyboard
    bool hasGnome = false;     ///< our extension is in GNOME Shell
    bool hasKde = false;       ///< KDE's global shortcuts are there
    bool hasSway = false;      ///< sway, and it can be given key bindings
    bool hasHyprland = false;  ///< Hyprland, which tells of its binds
    ServiceAccess service;

    /// Whether the desktop itself catches shortcuts.
    bool hasDesktops() const { return hasGnome || hasKde || hasSway || hasHyprland; }
};

/// Which tap the program takes of these, and why not the ones before it; and how
/// the service is.
std::vector<Finding> tapFindings(const TapChoices& choices);

}  // namespace quillmere
