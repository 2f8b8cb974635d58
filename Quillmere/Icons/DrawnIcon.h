#pragma once

#include <QIcon>

#include <functional>
#include <vector>

class QPainter;
class QRect;

namespace quillmere {

/// An icon that is drawn anew for every size that somebody asks for: no size is
/// a scaled picture of another, and none takes time or memory before.
namespace DrawnIcon {

/// Fills the rectangle, which is a square of one of the sizes asked for.
using Draw = std::function<void(QPainter& painter, const QRect& rect)>;

/// `sides` are the sizes, in pixels, that those get a picture of who want to
/// hear which there are: trays, task bars.
QIcon make(const std::vector<int>& sides, const Draw& draw);

}  // namespace DrawnIcon

}  // namespace quillmere
