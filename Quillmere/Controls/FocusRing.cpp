#include "Quillmere/Controls/FocusRing.h"

#include "Quillmere/Palette.h"

#include <QPainter>
#include <QProxyStyle>

namespace quillmere {

namespace {

constexpr double thickness = 2;
constexpr int reach = 4;  ///< from the control's edge to the ring's outer edge

/// QFocusFrame follows the control through scrolling and layout; how far it
/// reaches is its style's business.
class ReachStyle : public QProxyStyle {
public:
    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override {
        if (metric == PM_FocusFrameHMargin || metric == PM_FocusFrameVMargin) return reach;
        return QProxyStyle::pixelMetric(metric, option, widget);
    }

    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* result) const override {
        if (hint == SH_FocusFrame_Mask) return 0;
        if (hint == SH_FocusFrame_AboveWidget) return 1;  // else the nearest parent would cut it off
        return QProxyStyle::styleHint(hint, option, widget, result);
    }
};

ReachStyle& reachStyle() {
    static auto* const style = new ReachStyle;  // rings may outlive the application's statics
    return *style;
}

bool isLeavingWindow(Qt::FocusReason reason) {
    return reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason || reason == Qt::MenuBarFocusReason;
}

}  // namespace

FocusRing::FocusRing(QWidget* window) : QFocusFrame(window) {
    setStyle(&reachStyle());
}

// Not a direct child: it moves into the scroll area that the control lies in.
FocusRing* FocusRing::find(const QWidget& control) {
    return control.window()->findChild<FocusRing*>();
}

void FocusRing::focusIn(QWidget& control, Qt::FocusReason reason, double radius) {
    FocusRing* ring = find(control);
    if (!ring) ring = new FocusRing(control.window());
    if (reason == Qt::MouseFocusReason)
        ring->control_ = nullptr;
    else if (!isLeavingWindow(reason))
        ring->control_ = &control;
    if (ring->control_ != &control) return;
    ring->radius_ = radius;
    ring->setWidget(&control);
    ring->raise();
}

void FocusRing::focusOut(QWidget& control, Qt::FocusReason reason) {
    FocusRing* const ring = find(control);
    if (!ring) return;
    if (ring->widget() == &control) ring->setWidget(nullptr);
    if (ring->control_ == &control && !isLeavingWindow(reason)) ring->control_ = nullptr;
}

void FocusRing::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Palette::accent().resolved(Palette::isDark()), thickness));
    const QRectF middle = QRectF(rect()).adjusted(thickness / 2, thickness / 2, -thickness / 2, -thickness / 2);
    const double radius = radius_ + reach - thickness / 2;
    painter.drawRoundedRect(middle, radius, radius);
}

}  // namespace quillmere
