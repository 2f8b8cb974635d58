#include "Quillmere/Controls/PaletteScrollBar.h"

#include "Quillmere/Palette.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOptionSlider>

namespace quillmere {

namespace {
constexpr int thickness = 12;
constexpr int inset = 3;
}  // namespace

PaletteScrollBar::PaletteScrollBar(Qt::Orientation orientation, QWidget* parent) : QScrollBar(orientation, parent) {
    // the parent paints below it
    setAttribute(Qt::WA_OpaquePaintEvent, false);
}

QSize PaletteScrollBar::sizeHint() const {
    return {thickness, thickness};
}

void PaletteScrollBar::paintEvent(QPaintEvent*) {
    QStyleOptionSlider option;
    initStyleOption(&option);
    const QRect slider = style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Palette::muted().withAlpha(isSliderDown() ? 0.8 : 0.5).resolved(Palette::isDark()));
    const QRectF thumb = QRectF(slider).adjusted(inset, 0, -inset, 0);
    painter.drawRoundedRect(thumb, thumb.width() / 2, thumb.width() / 2);
}

}  // namespace quillmere
