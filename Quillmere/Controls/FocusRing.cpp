#include "Quillmere/Controls/FocusRing.h"

#include "Quillmere/Palette.h"

#include <QFocusFrame>
#include <QPainter>
#include <QPointer>
#include <QProxyStyle>
#include <QStyleOption>

namespace quillmere::FocusRing {

namespace {

constexpr double width = 2;
constexpr int reach = 4;  ///< from the control's edge to the ring's outer edge

/// QFocusFrame follows the control through scrolling and layout; what it looks
/// like and how far it reaches is its style's business.
class RingStyle : public QProxyStyle {
public:
    double radius = 0;

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

    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override {
        if (element != CE_FocusFrame) {
            QProxyStyle::drawControl(element, option, painter, widget);
            return;
        }
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(QPen(Palette::accent().resolved(Palette::isDark()), width));
        const QRectF ring = QRectF(option->rect).adjusted(width / 2, width / 2, -width / 2, -width / 2);
        painter->drawRoundedRect(ring, radius + reach - width / 2, radius + reach - width / 2);
    }
};

RingStyle& style() {
    static auto* const style = new RingStyle;  // the frame may outlive the application's statics
    return *style;
}

QPointer<QFocusFrame> frame;
QPointer<QWidget> ringed;

void show(QWidget& control, double radius) {
    if (!frame) {
        frame = new QFocusFrame(control.window());
        frame->setStyle(&style());
    }
    style().radius = radius;
    frame->setWidget(&control);
    frame->raise();
}

bool isLeavingWindow(Qt::FocusReason reason) {
    return reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason || reason == Qt::MenuBarFocusReason;
}

}  // namespace

void focusIn(QWidget& control, Qt::FocusReason reason, double radius) {
    if (reason == Qt::MouseFocusReason)
        ringed = nullptr;
    else if (!isLeavingWindow(reason))
        ringed = &control;
    if (ringed == &control) show(control, radius);
}

void focusOut(QWidget& control, Qt::FocusReason reason) {
    if (frame && frame->widget() == &control) frame->setWidget(nullptr);
    if (ringed == &control && !isLeavingWindow(reason)) ringed = nullptr;
}

}  // namespace quillmere::FocusRing
