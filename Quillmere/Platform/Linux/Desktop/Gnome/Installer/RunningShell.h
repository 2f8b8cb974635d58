#pragma once

#include <optional>
#include <string>

namespace quillmere::gnomeextension {

/// The main part of the version of the GNOME Shell on this session's bus, "43";
/// absent without one. Starts none.
std::optional<std::string> runningShellVersion();

}  // namespace quillmere::gnomeextension
