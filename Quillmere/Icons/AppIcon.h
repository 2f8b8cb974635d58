#pragma once

#include <QIcon>

namespace quillmere::AppIcon {

/// The program's own icon, for its windows: what the icon theme has as
/// "quillmere", drawn, since a program that runs from where it was built is in
/// no theme. Each window that a task bar shows sets it for itself: as the
/// application's it would be drawn at the start for the hidden plate, which
/// takes most of a megabyte.
QIcon make();

}  // namespace quillmere::AppIcon
