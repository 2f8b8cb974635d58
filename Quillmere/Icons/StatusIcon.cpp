#include "Quillmere/Icons/StatusIcon.h"

#include "Quillmere/Icons/DrawnIcon.h"

#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace quillmere {

namespace {

constexpr double designSize = 20;
constexpr int barCount = 5;
constexpr double firstAngle = 3.2986722862692828;  // 1.05 pi
constexpr double angleStep = 1.1;
constexpr double chordFactor = 0.5226872289306592;  // sin(angleStep / 2)
constexpr double barGap = 0.5;
constexpr double cornerFactor = 0.4;
constexpr double dimmedOpacity = 0.4;

/// One bar of the spiral: centre, rotation in radians, length and thickness in
/// the design's points, y upwards.
struct Bar {
    double x = 0;
    double y = 0;
    double rotation = 0;
    double length = 0;
    double thickness = 0;
};

Bar barAt(int index) {
    const double t = index / 4.0;
    const double angle = firstAngle - angleStep * index;
    const double radius = 6.6 - 2.6 * t;
    return {.x = radius * std::cos(angle),
            .y = radius * std::sin(angle),
            .rotation = angle - std::numbers::pi / 2,
            .length = 2 * radius * chordFactor - barGap,
            .thickness = 4.4 - 2.2 * t};
}

std::array<Bar, barCount> spiral() {
    std::array<Bar, barCount> bars;
    for (int i = 0; i < barCount; ++i)
        bars[static_cast<std::size_t>(i)] = barAt(i);
    const auto [minX, maxX] = std::ranges::minmax(bars, {}, &Bar::x);
    const auto [minY, maxY] = std::ranges::minmax(bars, {}, &Bar::y);
    const double midX = (minX.x + maxX.x) / 2;
    const double midY = (minY.y + maxY.y) / 2;
    for (Bar& bar : bars) {
        bar.x -= midX;
        bar.y -= midY;
    }
    return bars;
}

void drawBar(QPainter& painter, const Bar& bar) {
    painter.save();
    painter.translate(bar.x, bar.y);
    painter.rotate(bar.rotation * 180 / std::numbers::pi);
    const double corner = cornerFactor * bar.thickness;
    painter.drawRoundedRect(QRectF(-bar.length / 2, -bar.thickness / 2, bar.length, bar.thickness), corner, corner);
    painter.restore();
}

}  // namespace

void StatusIcon::draw(QPainter& painter, const QRectF& rect, const QColor& color) {
    const double scale = std::min(rect.width(), rect.height()) / designSize;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.translate(rect.center());
    // The design's y points upwards.
    painter.scale(scale, -scale);
    for (const Bar& bar : spiral())
        drawBar(painter, bar);
    painter.restore();
}

QIcon StatusIcon::make(const QColor& color, bool dimmed) {
    const auto drawSpiral = [color, dimmed](QPainter& painter, const QRect& rect) {
        if (dimmed) painter.setOpacity(painter.opacity() * dimmedOpacity);
        draw(painter, rect, color);
    };
    return DrawnIcon::make({16, 20, 22, 24, 32, 40, 44, 48, 64}, drawSpiral);
}

}  // namespace quillmere
