#pragma once

#include "Quillmere/Platform/InputSourceService.h"

#include <memory>

namespace quillmere {

/// The input sources of the desktop that the program runs on. On one that it
/// does not know there are none: the layouts of the X server that a Wayland
/// desktop runs for old programs are not the desktop's. Main thread only.
std::unique_ptr<InputSourceService> makeLinuxInputSources();

}  // namespace quillmere
