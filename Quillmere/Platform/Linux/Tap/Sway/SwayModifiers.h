#pragma once

#include "QuillmereCore/Shortcut.h"

#include <optional>
#include <string>
#include <string_view>

/// The modifiers of sway's key bindings: a bit each.
namespace quillmere::swayModifiers {

inline constexpr unsigned int shift = 1U << 0;

/// The modifier that sway calls so, in either case of letters: "Shift",
/// "Control" or "Ctrl", "Mod1" or "Alt", "Mod4" or "Super", and the rest.
std::optional<unsigned int> named(std::string_view name);

unsigned int of(Modifiers modifiers);

/// As sway reads them in front of a key, "Control+Mod1+".
std::string text(unsigned int modifiers);

}  // namespace quillmere::swayModifiers
