#pragma once

#include <QColor>
#include <QIcon>
#include <QRectF>

class QPainter;

namespace quillmere::StatusIcon {

/// Draws the five-bar spiral, centred in `rect`, filled with `color`. The
/// design's unit is one point of a 20 × 20 rectangle; a larger rectangle
/// scales it.
void draw(QPainter& painter, const QRectF& rect, const QColor& color);

/// The icon in the sizes that trays ask for, sharp at 1× and 2×, in `color`,
/// with a thin outline in its opposite, so that it can be told from a ground of
/// its own colour too; dimmed while switching is turned off. For a tray that
/// tints symbolic icons it has the name of one, where the icon themes have it.
QIcon make(const QColor& color, bool dimmed, bool isForTintingTray);

/// The icon for the macOS menu bar, at its true size at 1× and 2×: a template,
/// black, which the system tints; dimmed while switching is turned off.
QIcon makeTemplate(bool dimmed);

}  // namespace quillmere::StatusIcon
