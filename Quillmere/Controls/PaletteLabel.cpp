#include "Quillmere/Controls/PaletteLabel.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

namespace quillmere {

PaletteLabel::PaletteLabel(const QString& text, TextStyle style, const DynamicColor& color, QWidget* parent)
    : QLabel(parent), color_(color) {
    setTextFormat(Qt::PlainText);
    setFont(textFont(style));
    setText(text);
}

void PaletteLabel::setElided(bool elided) {
    elided_ = elided;
    updateGeometry();
    update();
}

QSize PaletteLabel::minimumSizeHint() const {
    if (!elided_) return QLabel::minimumSizeHint();
    return {fontMetrics().horizontalAdvance(QChar(0x2026)), fontMetrics().height()};
}

bool PaletteLabel::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip || !elided_) return QLabel::event(event);
    if (sizeHint().width() > width())
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), text(), this);
    else
        QToolTip::hideText();
    return true;
}

void PaletteLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    QColor color = color_.resolved(Palette::isDark());
    if (!isEnabled()) color.setAlphaF(color.alphaF() * 0.4F);
    painter.setPen(color);
    const Qt::Alignment aligned = QStyle::visualAlignment(layoutDirection(), alignment());
    // a right-to-left name still starts at the column's edge, among its neighbours
    const int flags = static_cast<int>(aligned) | Qt::AlignAbsolute | (wordWrap() ? Qt::TextWordWrap : 0);
    const QString shown = elided_ ? fontMetrics().elidedText(text(), Qt::ElideRight, width()) : text();
    painter.drawText(contentsRect(), flags, shown);
}

}  // namespace quillmere
