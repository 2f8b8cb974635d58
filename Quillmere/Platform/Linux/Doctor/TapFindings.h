#pragma once

#include "Quillmere/Platform/Finding.h"
#include "Quillmere/Platform/Linux/Doctor/ServiceAccess.h"
#include "Quillmere/Platform/Linux/LinuxSession.h"

#include <vector>

namespace quillmere {

/// What there is to catch keys with.
struct TapChoices {
    LinuxSession session;
    bool hasX11Tap = false;  ///< the X server lends its keyboard
    bool hasGnome = false;   ///< our extension is in GNOME Shell
    bool hasKde = false;     ///< KDE's global shortcuts are there
    ServiceAccess service;
};

/// Which tap the program takes of these, and why not the ones before it; and how
/// the service is.
std::vector<Finding> tapFindings(const TapChoices& choices);

}  // namespace quillmere
