#pragma once

#include "QuillmereCore/Shortcut.h"

#include <string>

namespace quillmere {

/// A shortcut in the words on this system's keyboards, in the order of its
/// signs: "Ctrl+Alt+Space". For those who do not know the signs, or hear them.
std::string spelledShortcut(const Shortcut& shortcut);

}  // namespace quillmere
