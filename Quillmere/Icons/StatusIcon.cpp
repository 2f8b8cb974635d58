#include "Quillmere/Icons/StatusIcon.h"

#include "Quillmere/Icons/DrawnIcon.h"

#include <QImage>
#include <QPainter>
#include <QStandardPaths>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace quillmere {

namespace {

constexpr double designSize = 20;
// Points that Qt gives an icon in the macOS menu bar, 22 high: enough for the
// spiral, without the design's margin.
constexpr int menuBarRoom = 18;
constexpr int barCount = 5;
constexpr double firstAngle = 3.2986722862692828;  // 1.05 pi
constexpr double angleStep = 1.1;
constexpr double chordFactor = 0.5226872289306592;  // sin(angleStep / 2)
constexpr double barGap = 0.5;
constexpr double cornerFactor = 0.4;
constexpr double dimmedOpacity = 0.4;
constexpr double outlineWidth = 0.8;
constexpr int outlineAlpha = 225;

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

void drawSpiral(QPainter& painter, const QRectF& rect, const QPen& pen, const QBrush& brush) {
    const double scale = std::min(rect.width(), rect.height()) / designSize;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(pen);
    painter.setBrush(brush);
    painter.translate(rect.center());
    // The design's y points upwards.
    painter.scale(scale, -scale);
    for (const Bar& bar : spiral())
        drawBar(painter, bar);
    painter.restore();
}

QImage drawOutlined(const QSize& size, const QColor& color) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    const int opposite = color.lightness() < 128 ? 255 : 0;
    const QColor outline(opposite, opposite, opposite);
    drawSpiral(painter, QRectF(image.rect()), QPen(outline, 2 * outlineWidth), outline);
    // As one shape: the outlines of two bars overlap.
    painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
    painter.fillRect(image.rect(), QColor(0, 0, 0, outlineAlpha));
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    StatusIcon::draw(painter, QRectF(image.rect()), color);
    return image;
}

/// Its name in the icon themes: empty where it is not installed, since a tray
/// may show nothing in place of an icon that it does not find.
QString installedName(bool dimmed) {
    const auto name = dimmed ? QStringLiteral("quillmere-inactive-symbolic") : QStringLiteral("quillmere-symbolic");
    const auto file = QStringLiteral("icons/hicolor/symbolic/apps/%1.svg").arg(name);
    const bool isInstalled = !QStandardPaths::locate(QStandardPaths::GenericDataLocation, file).isEmpty();
    return isInstalled ? name : QString();
}

}  // namespace

void StatusIcon::draw(QPainter& painter, const QRectF& rect, const QColor& color) {
    drawSpiral(painter, rect, Qt::NoPen, color);
}

QIcon StatusIcon::make(const QColor& color, bool dimmed, bool isForTintingTray) {
    const auto drawIcon = [color, dimmed](QPainter& painter, const QRect& rect) {
        if (dimmed) painter.setOpacity(painter.opacity() * dimmedOpacity);
        painter.drawImage(rect, drawOutlined(rect.size(), color));
    };
    return DrawnIcon::make({16, 20, 22, 24, 32, 40, 44, 48, 64}, drawIcon,
                           isForTintingTray ? installedName(dimmed) : QString());
}

QIcon StatusIcon::makeTemplate(bool dimmed) {
    const auto drawSpiral = [dimmed](QPainter& painter, const QRect& rect) {
        if (dimmed) painter.setOpacity(painter.opacity() * dimmedOpacity);
        const double side = rect.width() * designSize / menuBarRoom;
        QRectF design(0, 0, side, side);
        design.moveCenter(QRectF(rect).center());
        draw(painter, design, Qt::black);
    };
    QIcon icon = DrawnIcon::make({menuBarRoom, 2 * menuBarRoom}, drawSpiral);
    icon.setIsMask(true);
    return icon;
}

}  // namespace quillmere
