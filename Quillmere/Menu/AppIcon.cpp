#include "Quillmere/Menu/AppIcon.h"

#include "Quillmere/Menu/StatusIcon.h"

#include <QPainter>
#include <QPixmap>

namespace quillmere {

namespace {

// Of the picture that is installed as quillmere.svg.
constexpr double designSize = 128;
constexpr QRectF plate(8, 8, 112, 112);
constexpr QRectF spiral(15, 15, 98, 98);
constexpr double cornerRadius = 26;
constexpr QRgb plateColor = qRgb(0xa8, 0x4e, 0x2c);

QPixmap picture(int side) {
    QPixmap pixmap(side, side);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(side / designSize, side / designSize);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(plateColor));
    painter.drawRoundedRect(plate, cornerRadius, cornerRadius);
    StatusIcon::draw(painter, spiral, Qt::white);
    return pixmap;
}

}  // namespace

QIcon AppIcon::make() {
    QIcon icon;
    for (const int side : {16, 24, 32, 48, 64, 128})
        icon.addPixmap(picture(side));
    return icon;
}

}  // namespace quillmere
