#pragma once

#include "QuillmereCore/Shortcut.h"

#include <cstdint>

namespace quillmere {

/// The flag word of a key press with these modifiers, for a desktop that tells
/// which shortcut was pressed and nothing of keys.
std::uint64_t flagWord(Modifiers modifiers);

}  // namespace quillmere
