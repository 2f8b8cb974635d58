#include "Quillmere/Controls/TextButton.h"

#include <QFontMetrics>
#include <QPainter>

namespace quillmere {

TextButton::TextButton(const QString& title, const Metrics& metrics, QWidget* parent)
    : ControlButton(title, metrics.radius, parent), metrics_(metrics) {
    setFont(textFont(metrics_.text));
}

void TextButton::setMetrics(const Metrics& metrics) {
    metrics_ = metrics;
    setFont(textFont(metrics_.text));
    updateGeometry();
}

QSize TextButton::sizeHint() const {
    const QFontMetrics text = fontMetrics();
    return {text.horizontalAdvance(title()) + 2 * metrics_.horizontalPadding,
            text.height() + 2 * metrics_.verticalPadding};
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
    const QRect line = rect().adjusted(metrics_.horizontalPadding, 0, -metrics_.horizontalPadding, 0);
    const QString text = fontMetrics().elidedText(title(), Qt::ElideRight, line.width());
    painter.drawText(line, Qt::AlignCenter | Qt::TextSingleLine, text);
}

}  // namespace quillmere
