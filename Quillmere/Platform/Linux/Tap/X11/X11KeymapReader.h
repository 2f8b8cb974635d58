#pragma once

#include "Quillmere/Platform/Linux/Tap/X11/X11Keymap.h"

struct _XDisplay;  // NOLINT(bugprone-reserved-identifier): Xlib's own name

namespace quillmere {

/// Reads the keyboard map in use; an empty one when the server does not say.
/// Some round trips.
X11Keymap readX11Keymap(_XDisplay* display);

}  // namespace quillmere
