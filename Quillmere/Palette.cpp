#include "Quillmere/Palette.h"

#include <QApplication>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace quillmere {

namespace {

bool drawsDark = false;

QColor tinted(QColor color, double alpha) {
    color.setAlphaF(static_cast<float>(alpha));
    return color;
}

QPainterPath roundedRect(const QRectF& rect, double radius) {
    const double largest = std::min(rect.width(), rect.height()) / 2;
    const double used = std::clamp(radius, 0.0, std::max(largest, 0.0));
    QPainterPath path;
    path.addRoundedRect(rect, used, used);
    return path;
}

}  // namespace

DynamicColor DynamicColor::withAlpha(double alpha) const {
    return {tinted(light, alpha), tinted(dark, alpha)};
}

DynamicColor Palette::dynamic(QColor light, QColor dark) {
    return {light, dark};
}

const DynamicColor& Palette::window() {
    static const auto color = dynamic(QColor(255, 255, 255), QColor(27, 29, 34));
    return color;
}

const DynamicColor& Palette::card() {
    static const auto color = dynamic(QColor(248, 247, 244), QColor(38, 40, 45));
    return color;
}

const DynamicColor& Palette::border() {
    static const auto color = dynamic(QColor(228, 226, 220), QColor(58, 61, 68));
    return color;
}

const DynamicColor& Palette::chip() {
    static const auto color = dynamic(QColor(255, 255, 255), QColor(51, 54, 61));
    return color;
}

const DynamicColor& Palette::accent() {
    static const auto color = dynamic(QColor(168, 78, 44), QColor(222, 107, 60));
    return color;
}

// The reverse of the others on purpose: a dark tint on light, a light one on dark.
const DynamicColor& Palette::selection() {
    static const auto color = dynamic(tinted(QColor(27, 29, 34), 0.12), tinted(QColor(236, 235, 231), 0.16));
    return color;
}

const DynamicColor& Palette::muted() {
    static const auto color = dynamic(QColor(95, 99, 107), QColor(163, 166, 173));
    return color;
}

const DynamicColor& Palette::clear() {
    static const auto color = dynamic(QColor(0, 0, 0, 0), QColor(0, 0, 0, 0));
    return color;
}

bool Palette::isDark() {
    return drawsDark;
}

void Palette::setDark(bool isDark) {
    if (drawsDark == isDark) return;
    drawsDark = isDark;
    // Children too: an update of a window repaints only what changed its looks by itself.
    for (QWidget* widget : QApplication::allWidgets())
        widget->update();
}

// Qt's own palette does not follow the portal's choice, so the text colour is
// stated here, at the opacity that primary text has on macOS.
const DynamicColor& labelColor() {
    static const auto color = Palette::dynamic(tinted(QColor(0, 0, 0), 0.85), tinted(QColor(255, 255, 255), 0.85));
    return color;
}

PlateView::PlateView(DynamicColor fill, DynamicColor stroke, double radius, QWidget* parent)
    : QWidget(parent), fill_(fill), stroke_(stroke), radius_(radius) {}

double PlateView::borderWidth() const {
    return stroke_ == Palette::clear() ? 0 : 1;
}

void PlateView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool dark = Palette::isDark();
    const auto outer = roundedRect(QRectF(rect()), radius_);
    painter.fillPath(outer, fill_.resolved(dark));
    if (borderWidth() == 0) return;

    // As a ring and not as a pen stroke, which would straddle the edge.
    const double width = borderWidth();
    const auto inner = roundedRect(QRectF(rect()).adjusted(width, width, -width, -width), radius_ - width);
    painter.fillPath(outer - inner, stroke_.resolved(dark));
}

}  // namespace quillmere
