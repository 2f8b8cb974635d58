#include "Quillmere/Platform/Linux/Doctor/TapFindings.h"

#include <string>

namespace quillmere {

namespace {

using Kind = ServiceAccess::Kind;

std::string stateOf(const ServiceAccess& service) {
    switch (service.kind) {
        case Kind::noBus:
            return "there is no system bus to ask it on";
        case Kind::missing:
            return "not installed";
        case Kind::silent:
            return "does not answer: " + service.problem;
        case Kind::refused:
            return "installed, but you have no access";
        case Kind::given:
            break;
    }
    return "installed, and you have access";
}

std::string adviceOf(const ServiceAccess& service) {
    switch (service.kind) {
        case Kind::noBus:
            return "Start the system's message bus (dbus).";
        case Kind::missing:
            return "Install the package quillmere-tapd.";
        case Kind::silent:
            return "See what it says: journalctl -u quillmere-tapd";
        case Kind::refused:
            return "Start Quillmere, press \"Open System Settings\" in its window, and give an administrator's "
                   "password.";
        case Kind::given:
            break;
    }
    return {};
}

Finding x11Tap(const TapChoices& choices) {
    if (!choices.hasX11Tap) {
        return {"Tap", "none: the X server does not answer, or lacks XInput 2.2 or XKB",
                "Look whether other programs open windows on $DISPLAY."};
    }
    const bool hasServicesFn = choices.service.isGiven();
    return {"Tap", hasServicesFn ? "the X server's, and Fn from the service" : "the X server's", {}};
}

Finding waylandTap(const TapChoices& choices) {
    if (choices.service.isGiven()) return {"Tap", "the key-tap service's", {}};
    const std::string reason = "the service comes first, but: " + stateOf(choices.service);
    if (choices.hasGnome) return {"Tap", "GNOME Shell's, through Quillmere's extension, without Fn\n" + reason, {}};
    if (choices.hasSway) return {"Tap", "sway's key bindings, without Fn\n" + reason, {}};
    if (choices.hasHyprland) return {"Tap", "Hyprland's binds, without Fn\n" + reason, {}};
    if (choices.hasKde) return {"Tap", "KDE's global shortcuts, without Fn\n" + reason, {}};
    return {"Tap", "none: this desktop lends none of its own\n" + reason, adviceOf(choices.service)};
}

}  // namespace

std::vector<Finding> tapFindings(const TapChoices& choices) {
    const bool isX11 = choices.session.isX11();
    Finding service{.subject = "Service", .state = stateOf(choices.service), .advice = {}};
    // Elsewhere switching works without it.
    if (!isX11 && !choices.hasDesktops())
        service.advice = adviceOf(choices.service);
    else if (!choices.service.isGiven())
        service.state += " (needed here only for an Fn key that the desktop does not see)";
    return {isX11 ? x11Tap(choices) : waylandTap(choices), service};
}

}  // namespace quillmere
