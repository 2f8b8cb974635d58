#include "Quillmere/Platform/Linux/Plate/PlateDrawing.h"

#include <QPainter>
#include <QWidget>

namespace quillmere {

QImage drawWidget(QWidget& widget, int scale) {
    QImage picture(widget.size() * scale, QImage::Format_ARGB32_Premultiplied);
    picture.setDevicePixelRatio(scale);
    picture.fill(Qt::transparent);
    widget.render(&picture, QPoint(), QRegion(), QWidget::DrawChildren);
    return picture;
}

void copyFaded(const QImage& picture, double alpha, QImage& target) {
    target.fill(Qt::transparent);
    QPainter painter(&target);
    painter.setOpacity(alpha);
    painter.drawImage(target.rect(), picture);
}

}  // namespace quillmere
