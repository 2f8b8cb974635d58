#include "Quillmere/Platform/Linux/LinuxSession.h"

#include <cstdlib>
#include <sstream>

namespace quillmere {

namespace {

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : value;
}

/// The parts of a list that colons divide, without empty ones.
std::vector<std::string> parts(const std::string& list) {
    std::vector<std::string> result;
    std::istringstream stream(list);
    for (std::string part; std::getline(stream, part, ':');)
        if (!part.empty()) result.push_back(part);
    return result;
}

}  // namespace

LinuxSession LinuxSession::current() {
    return {
        .hasWayland = !variable("WAYLAND_DISPLAY").empty(),
        .hasX11 = !variable("DISPLAY").empty(),
        .swaySocket = variable("SWAYSOCK"),
        .desktops = parts(variable("XDG_CURRENT_DESKTOP")),
    };
}

}  // namespace quillmere
