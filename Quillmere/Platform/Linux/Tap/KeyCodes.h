#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace quillmere::KeyCodes {

/// A key number of the Linux input layer (the KEY_ constants of
/// linux/input-event-codes.h).
using EvdevCode = unsigned int;

/// X11 numbers a key 8 above its evdev code, and its numbers end at 255: keys
/// from 248 on do not exist there.
inline constexpr EvdevCode x11Offset = 8;
inline constexpr unsigned int maxX11KeyCode = 255;

/// The virtual key code (the macOS numbering, kVK_ in HIToolbox/Events.h) of a
/// key; absent for a key that has none. Several keys may share one code.
std::optional<std::int64_t> virtualKey(EvdevCode code);

/// Every key with this virtual key code, the usual one first; empty for a code
/// that no key has.
std::vector<EvdevCode> evdevCodes(std::int64_t virtualKey);

/// Whether the key is an Fn key.
bool isFn(EvdevCode code);

/// Whether the key changes the flag word instead of being pressed: the keys of
/// Shift, Control, Option, Command, both sides, and Caps Lock.
bool isModifier(EvdevCode code);

}  // namespace quillmere::KeyCodes
