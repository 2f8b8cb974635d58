#pragma once

#include "Quillmere/Platform/KeyEvent.h"
#include "Quillmere/Platform/Linux/Tap/KeyCodes.h"

#include <cstdint>
#include <optional>

namespace quillmere {

/// A key that has gone down or up in one of the program's windows, as a tap
/// tells of it. Absent for a modifier key and Fn, which are no presses, and for
/// one that has no number. `flags` is the flag word of that moment.
std::optional<KeyEventFields> typedKey(KeyCodes::EvdevCode code, bool isPress, std::uint64_t flags);

}  // namespace quillmere
