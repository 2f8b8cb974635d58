#pragma once

#include <QRegion>

namespace quillmere {

/// The points whose middle lies within the rectangle with its corners rounded.
/// A region made from the outline's path rounds its corner points and dents the
/// curve.
QRegion roundedRegion(const QRect& rect, double radius);

}  // namespace quillmere
