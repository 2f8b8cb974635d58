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

/// The icon in the sizes that trays ask for, sharp at 1× and 2×, in `color`;
/// dimmed while switching is turned off.
QIcon make(const QColor& color, bool dimmed);

}  // namespace quillmere::StatusIcon
