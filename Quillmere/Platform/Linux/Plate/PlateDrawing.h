#pragma once

#include <QImage>

class QWidget;

namespace quillmere {

/// What a widget without a window looks like, on a display with `scale` pixels
/// a point; transparent where nothing is drawn. Main thread only.
QImage drawWidget(QWidget& widget, int scale);

/// Puts `picture` into `target`, of the same size in pixels, `alpha` (0 to 1)
/// as opaque as it is; nothing stays of what `target` held.
void copyFaded(const QImage& picture, double alpha, QImage& target);

}  // namespace quillmere
