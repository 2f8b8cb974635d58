#pragma once

#include "QuillmereCore/Shortcut.h"

#include <string>
#include <vector>

/// How GNOME's compositor names a shortcut.
namespace quillmere::gnomeAccelerators {

/// "<Control><Alt>0x41": by the key's number, so that it is the same key in
/// every layout. One for each of the keys that the shortcut may be pressed by;
/// none for Fn alone, and for a key whose number no accelerator can have.
std::vector<std::string> of(const Shortcut& shortcut);

}  // namespace quillmere::gnomeAccelerators
