#include "Quillmere/Controls/IconButton.h"

#include "Quillmere/Palette.h"

#include <QPainter>
#include <QPainterPath>

namespace quillmere {

namespace {

constexpr int side = 24;
constexpr double cornerRadius = 6;

// Each picture lies in a square of 16 points whose origin is its middle.

QPainterPath chevron(double up) {
    QPainterPath path(QPointF(-4.5, 2.25 * up));
    path.lineTo(0, -2.25 * up);
    path.lineTo(4.5, 2.25 * up);
    return path;
}

QPainterPath minusCircle() {
    QPainterPath path;
    path.addEllipse(QPointF(0, 0), 6.5, 6.5);
    path.moveTo(-3, 0);
    path.lineTo(3, 0);
    return path;
}

QPainterPath trash() {
    QPainterPath path(QPointF(-6, -4));  // the lid
    path.lineTo(6, -4);
    path.moveTo(-2, -4);  // its handle
    path.lineTo(-2, -6.5);
    path.lineTo(2, -6.5);
    path.lineTo(2, -4);
    path.moveTo(-4.5, -4);  // the bin
    path.lineTo(-4, 6.5);
    path.lineTo(4, 6.5);
    path.lineTo(4.5, -4);
    for (const double x : {-1.5, 1.5}) {  // its ribs
        path.moveTo(x, -1);
        path.lineTo(x, 3.5);
    }
    return path;
}

QPainterPath path(Icon icon) {
    switch (icon) {
        case Icon::trash:
            return trash();
        case Icon::chevronUp:
            return chevron(1);
        case Icon::chevronDown:
            return chevron(-1);
        case Icon::minusCircle:
            return minusCircle();
    }
    return {};
}

}  // namespace

IconButton::IconButton(Icon icon, const QString& name, QWidget* parent)
    : ControlButton({}, cornerRadius, parent), icon_(icon) {
    setAccessibleName(name);
    setAttribute(Qt::WA_Hover);
}

QSize IconButton::sizeHint() const {
    return {side, side};
}

double IconButton::opacity() const {
    return isEnabled() ? ControlButton::opacity() : 0.3;
}

void IconButton::paintFace(QPainter& painter) {
    const bool isDark = Palette::isDark();
    if (isEnabled() && underMouse()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(Palette::selection().withAlpha(0.08).resolved(isDark));
        painter.drawRoundedRect(rect(), cornerRadius, cornerRadius);
    }
    painter.translate(QRectF(rect()).center());
    painter.setPen(QPen(Palette::muted().resolved(isDark), 1.3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(path(icon_));
}

}  // namespace quillmere
