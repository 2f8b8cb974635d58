#pragma once

#include <QIcon>
#include <QString>

#include <functional>
#include <vector>

class QPainter;
class QRect;

namespace quillmere {

/// An icon that is drawn anew for every size that somebody asks for: it is sharp
/// in each, and takes neither time nor memory until then.
namespace DrawnIcon {

/// Fills the rectangle, which is a square of one of the sizes asked for.
using Draw = std::function<void(QPainter& painter, const QRect& rect)>;

/// `sides`, in pixels, are the sizes it is said to have: trays and task bars
/// ask for pictures of these. `name` is that of the same icon in icon themes,
/// which trays may show in place of the drawing; empty for none.
QIcon make(const std::vector<int>& sides, const Draw& draw, const QString& name = {});

}  // namespace DrawnIcon

}  // namespace quillmere
