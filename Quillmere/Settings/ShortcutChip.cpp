#include "Quillmere/Settings/ShortcutChip.h"

#include <QFontMetricsF>
#include <QPainter>

namespace quillmere {

namespace {

const QString globe = QStringLiteral("🌐");
constexpr double diameter = 12;

/// A sphere with its equator, a meridian and two parallels, in one point's
/// width.
void paintGlobe(QPainter& painter, const QPointF& middle) {
    const double radius = diameter / 2;
    painter.save();
    painter.setPen(QPen(painter.pen().color(), 1));
    painter.setBrush(Qt::NoBrush);
    painter.translate(middle);
    painter.drawEllipse(QPointF(), radius, radius);
    painter.drawEllipse(QPointF(), radius * 0.45, radius);
    painter.drawLine(QPointF(-radius, 0), QPointF(radius, 0));
    for (const double y : {-radius * 0.5, radius * 0.5})
        painter.drawLine(QPointF(-radius * 0.866, y), QPointF(radius * 0.866, y));
    painter.restore();
}

}  // namespace

ShortcutChip::ShortcutChip(QWidget* parent) : ChipButton({}, {.monospaced = true}, parent) {}

bool ShortcutChip::hasGlobe() const {
    return title().startsWith(globe);
}

QString ShortcutChip::textAfterGlobe() const {
    return title().mid(globe.size());
}

double ShortcutChip::textWidth() const {
    if (!hasGlobe()) return ChipButton::textWidth();
    return diameter + QFontMetricsF(font()).horizontalAdvance(textAfterGlobe());
}

void ShortcutChip::paintText(QPainter& painter, const QRectF& line) const {
    if (!hasGlobe()) {
        ChipButton::paintText(painter, line);
        return;
    }
    const double left = line.left() + (line.width() - textWidth()) / 2;
    paintGlobe(painter, QPointF(left + diameter / 2, line.center().y()));
    painter.drawText(line.adjusted(left - line.left() + diameter, 0, 0, 0),
                     Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, textAfterGlobe());
}

}  // namespace quillmere
