#include "Quillmere/Platform/Linux/LinuxSession.h"

#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <system_error>

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

/// Below the user's folder for what runs; before version 0.40 it was another.
std::string folderOfHyprland() {
    const std::string instance = variable("HYPRLAND_INSTANCE_SIGNATURE");
    if (instance.empty()) return {};
    const std::filesystem::path folder = std::filesystem::path(variable("XDG_RUNTIME_DIR")) / "hypr" / instance;
    std::error_code ignored;
    return std::filesystem::exists(folder, ignored) ? folder.string() : "/tmp/hypr/" + instance;
}

}  // namespace

LinuxSession LinuxSession::current() {
    return {
        .hasWayland = !variable("WAYLAND_DISPLAY").empty(),
        .hasX11 = !variable("DISPLAY").empty(),
        .swaySocket = variable("SWAYSOCK"),
        .hyprlandFolder = folderOfHyprland(),
        .desktops = parts(variable("XDG_CURRENT_DESKTOP")),
    };
}

}  // namespace quillmere
