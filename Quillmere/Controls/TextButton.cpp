#include "Quillmere/Controls/TextButton.h"

#include <QFontMetrics>
#include <QPainter>

#include <cmath>

namespace quillmere {

TextButton::TextButton(const QString& title, const Metrics& metrics, QWidget* parent)
    : ControlButton(title, metrics.radius, parent), metrics_(metrics) {
    setFont(textFont(metrics_.text));
}

double TextButton::textWidth() const {
    return QFontMetricsF(font()).horizontalAdvance(title());
}

QSize TextButton::sizeHint() const {
    return {static_cast<int>(std::ceil(textWidth())) + 2 * metrics_.horizontalPadding,
            fontMetrics().height() + 2 * metrics_.verticalPadding};
}

void TextButton::paintFace(QPainter& painter) {
    const Colors colors = this->colors();
    const bool isDark = Palette::isDark();
    const bool isOutlined = colors.stroke != Palette::clear();
    const double inset = isOutlined ? 0.5 : 0;
    painter.setPen(isOutlined ? QPen(colors.stroke.resolved(isDark), 1) : QPen(Qt::NoPen));
    painter.setBrush(colors.fill.resolved(isDark));
    const QRectF shape = QRectF(rect()).adjusted(inset, inset, -inset, -inset);
    painter.drawRoundedRect(shape, metrics_.radius - inset, metrics_.radius - inset);

    painter.setPen(colors.text.resolved(isDark));
    paintText(painter, QRectF(rect()).adjusted(metrics_.horizontalPadding, 0, -metrics_.horizontalPadding, 0));
}

void TextButton::paintText(QPainter& painter, const QRectF& line) const {
    // asked only then: rounding makes it shorten a text that just fits
    const bool fits = textWidth() <= line.width();
    const QString text = fits ? title() : QFontMetricsF(font()).elidedText(title(), Qt::ElideRight, line.width());
    painter.drawText(line, Qt::AlignCenter | Qt::TextSingleLine, text);
}

}  // namespace quillmere
