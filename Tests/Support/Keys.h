#pragma once

namespace quillmere::support {

/// A key of a keyboard by its X keycode, which is the kernel's key number
/// (linux/input-event-codes.h) plus 8.
using Key = unsigned int;

/// The keys that the tests type. Letters carry their US names.
namespace keys {
inline constexpr Key escape = 1 + 8;
inline constexpr Key one = 2 + 8;
inline constexpr Key tab = 15 + 8;
inline constexpr Key q = 16 + 8;
inline constexpr Key leftControl = 29 + 8;
inline constexpr Key a = 30 + 8;
inline constexpr Key s = 31 + 8;
inline constexpr Key d = 32 + 8;
inline constexpr Key k = 37 + 8;
inline constexpr Key leftShift = 42 + 8;
inline constexpr Key z = 44 + 8;
inline constexpr Key x = 45 + 8;
inline constexpr Key b = 48 + 8;
inline constexpr Key leftAlt = 56 + 8;
inline constexpr Key space = 57 + 8;
inline constexpr Key capsLock = 58 + 8;
inline constexpr Key f1 = 59 + 8;
inline constexpr Key numLock = 69 + 8;
inline constexpr Key rightControl = 97 + 8;
inline constexpr Key rightAlt = 100 + 8;
inline constexpr Key leftSuper = 125 + 8;
/// KEY_WAKEUP, the Fn of many laptops; XF86WakeUp in X11.
inline constexpr Key fn = 143 + 8;
/// A number that the layouts of the tests give no meaning.
inline constexpr Key unmapped = 248;
inline constexpr Key last = 255;
}  // namespace keys

}  // namespace quillmere::support
