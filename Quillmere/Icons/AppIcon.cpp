#include "Quillmere/Icons/AppIcon.h"

#include "Quillmere/Icons/DrawnIcon.h"
#include "Quillmere/Icons/StatusIcon.h"

#include <QPainter>

namespace quillmere {

namespace {

// Of the picture that is installed as quillmere.svg.
constexpr double designSize = 128;
constexpr QRectF plate(8, 8, 112, 112);
constexpr QRectF spiral(15, 15, 98, 98);
constexpr double cornerRadius = 26;
constexpr QRgb plateColor = qRgb(0xa8, 0x4e, 0x2c);

void drawIcon(QPainter& painter, const QRect& rect) {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(rect.topLeft());
    painter.scale(rect.width() / designSize, rect.height() / designSize);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(plateColor));
    painter.drawRoundedRect(plate, cornerRadius, cornerRadius);
    StatusIcon::draw(painter, spiral, Qt::white);
}

}  // namespace

QIcon AppIcon::make() {
    return DrawnIcon::make({16, 24, 32, 48, 64, 128}, drawIcon);
}

}  // namespace quillmere
