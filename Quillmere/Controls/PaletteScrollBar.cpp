#include "Quillmere/Controls/PaletteScrollBar.h"

#include "Quillmere/Palette.h"

#include <QPainter>
#include <QProxyStyle>
#include <QStyleOptionSlider>

namespace quillmere {

namespace {

constexpr int thickness = 12;
constexpr int inset = 3;

/// Without buttons at the ends: the whole bar is the knob's groove.
class BarStyle : public QProxyStyle {
public:
    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override {
        if (metric == PM_ScrollBarExtent) return thickness;
        if (metric == PM_ScrollBarSliderMin) return 2 * thickness;
        return QProxyStyle::pixelMetric(metric, option, widget);
    }

    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                         const QWidget* widget) const override {
        const auto* const bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
        if (control != CC_ScrollBar || !bar || bar->orientation != Qt::Vertical)
            return QProxyStyle::subControlRect(control, option, part, widget);
        const QRect groove = bar->rect;
        const QRect knob = knobRect(*bar, groove);
        switch (part) {
            case SC_ScrollBarGroove:
                return groove;
            case SC_ScrollBarSlider:
                return knob;
            case SC_ScrollBarSubPage:
                return {groove.topLeft(), QPoint(groove.right(), knob.top() - 1)};
            case SC_ScrollBarAddPage:
                return {QPoint(groove.left(), knob.bottom() + 1), groove.bottomRight()};
            default:
                return {};
        }
    }

private:
    QRect knobRect(const QStyleOptionSlider& bar, const QRect& groove) const {
        const int range = bar.maximum - bar.minimum;
        const double share = static_cast<double>(bar.pageStep) / (range + bar.pageStep);
        const int length = qBound(2 * thickness, static_cast<int>(groove.height() * share), groove.height());
        const int top = sliderPositionFromValue(bar.minimum, bar.maximum, bar.sliderPosition, groove.height() - length,
                                                bar.upsideDown);
        return {groove.left(), groove.top() + top, groove.width(), length};
    }
};

BarStyle& barStyle() {
    static auto* const style = new BarStyle;  // bars may outlive the application's statics
    return *style;
}

}  // namespace

PaletteScrollBar::PaletteScrollBar(QWidget* parent) : QScrollBar(Qt::Vertical, parent) {
    setStyle(&barStyle());
    // the parent paints below it
    setAttribute(Qt::WA_OpaquePaintEvent, false);
}

void PaletteScrollBar::paintEvent(QPaintEvent*) {
    QStyleOptionSlider option;
    initStyleOption(&option);
    const QRect knob = style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Palette::muted().withAlpha(isSliderDown() ? 0.8 : 0.5).resolved(Palette::isDark()));
    const QRectF shape = QRectF(knob).adjusted(inset, 0, -inset, 0);
    painter.drawRoundedRect(shape, shape.width() / 2, shape.width() / 2);
}

}  // namespace quillmere
