#pragma once

#include <QIcon>

namespace quillmere::AppIcon {

/// The program's own icon, for its windows: what the icon theme has as
/// "quillmere", drawn, since a program that runs from where it was built is in
/// no theme.
QIcon make();

}  // namespace quillmere::AppIcon
