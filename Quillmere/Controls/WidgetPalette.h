#pragma once

#include <QPalette>

namespace quillmere {

/// The palette colours of this moment for what the desktop's style draws:
/// menus and lists that pop up.
QPalette widgetPalette();

}  // namespace quillmere
