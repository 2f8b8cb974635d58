#pragma once

#include <AppKit/AppKit.h>

#include <QColor>

namespace quillmere::NativeColor {

/// A fixed colour. Autoreleased.
NSColor* make(const QColor& color);

/// One of the two: the system decides anew for each appearance that it draws
/// in. Autoreleased.
NSColor* makeDynamic(const QColor& light, const QColor& dark);

/// Whether what is drawn in this appearance is drawn dark: the nearest of the
/// system's two plain appearances decides, also for those of high contrast.
bool isDark(NSAppearance* appearance);

}  // namespace quillmere::NativeColor
