#include "Quillmere/Updates/WrappedLabel.h"

#include <QPainter>

namespace quillmere {

namespace {

constexpr int wrapping = Qt::TextWordWrap | Qt::TextWrapAnywhere | Qt::AlignLeading | Qt::AlignTop;

}  // namespace

WrappedLabel::WrappedLabel(const QString& text, TextStyle style, const DynamicColor& color, QWidget* parent)
    : PaletteLabel(text, style, color, parent) {
    setWordWrap(true);
}

QSize WrappedLabel::minimumSizeHint() const {
    return {0, fontMetrics().height()};
}

int WrappedLabel::heightForWidth(int width) const {
    const QRect unbounded(0, 0, width, QWIDGETSIZE_MAX);
    return fontMetrics().boundingRect(unbounded, wrapping, text()).height();
}

void WrappedLabel::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setPen(color().resolved(Palette::isDark()));
    painter.drawText(rect(), wrapping, text());
}

}  // namespace quillmere
