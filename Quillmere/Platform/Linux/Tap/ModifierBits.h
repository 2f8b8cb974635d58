#pragma once

#include "QuillmereCore/Shortcut.h"

#include <optional>
#include <string>
#include <string_view>

/// The modifiers of key bindings, a bit each, as X11 numbers them and the
/// compositors after it.
namespace quillmere::modifierBits {

inline constexpr unsigned int shift = 1U << 0;
inline constexpr unsigned int lock = 1U << 1;
inline constexpr unsigned int control = 1U << 2;
inline constexpr unsigned int mod1 = 1U << 3;
inline constexpr unsigned int mod2 = 1U << 4;
inline constexpr unsigned int mod3 = 1U << 5;
inline constexpr unsigned int mod4 = 1U << 6;
inline constexpr unsigned int mod5 = 1U << 7;

/// The modifier that sway calls so, in either case of letters: "Shift",
/// "Control" or "Ctrl", "Mod1" or "Alt", "Mod4" or "Super", and the rest.
std::optional<unsigned int> named(std::string_view name);

unsigned int of(Modifiers modifiers);

/// As sway reads them in front of a key, "Control+Mod1+".
std::string text(unsigned int modifiers);

}  // namespace quillmere::modifierBits
