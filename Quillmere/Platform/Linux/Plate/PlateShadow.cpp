#include "Quillmere/Platform/Linux/Plate/PlateShadow.h"

#include "Quillmere/Platform/PlatePanel.h"

#include <qdrawutil.h>
#include <QImage>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace quillmere {

namespace {

// Points: how soft it is, and how far below the plate it lies.
constexpr double softness = 9;
constexpr int drop = 6;
constexpr double strength = 0.35;

// Points from a corner of the plate to where the shadow is the same all along
// the edge.
constexpr int corner = static_cast<int>(PlatePanel::cornerRadius) + drop;

/// From a point to the outline of a rounded rectangle; negative within it.
double distance(QPointF point, const QRectF& rect, double radius) {
    const double x = std::abs(point.x() - rect.center().x()) - rect.width() / 2 + radius;
    const double y = std::abs(point.y() - rect.center().y()) - rect.height() / 2 + radius;
    return std::hypot(std::max(x, 0.0), std::max(y, 0.0)) + std::min(std::max(x, y), 0.0) - radius;
}

/// What a Gaussian blur makes of a straight edge: near enough at the corners.
double shade(double distance) {
    return strength * std::erfc(distance / (softness * std::numbers::sqrt2)) / 2;
}

QSize tileSize(QSize plate, double scale) {
    return (QSizeF(plate.grownBy(PlateShadow::margins())) * scale).toSize();
}

/// Its own pixels are those of the screen, `scale` a point.
QPixmap drawTile(QSize plate, double scale) {
    const QRectF outline(QPointF(PlateShadow::margin, PlateShadow::margin), QSizeF(plate));
    const double radius = std::min(PlatePanel::cornerRadius, outline.height() / 2);
    QImage image(tileSize(plate, scale), QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QPointF point = (QPointF(x, y) + QPointF(0.5, 0.5)) / scale;
            // Nothing of it beneath the plate, which would be darker where it is translucent.
            const double outside = std::clamp(distance(point, outline, radius) * scale + 0.5, 0.0, 1.0);
            const double alpha = outside * shade(distance(point - QPointF(0, drop), outline, radius));
            image.setPixel(x, y, qRgba(0, 0, 0, static_cast<int>(std::lround(255 * alpha))));
        }
    }
    return QPixmap::fromImage(std::move(image));
}

}  // namespace

void PlateShadow::setDrawn(bool isDrawn) {
    if (isDrawn_ == isDrawn) return;
    isDrawn_ = isDrawn;
    update();
}

void PlateShadow::paintEvent(QPaintEvent* /*event*/) {
    if (!isDrawn_) return;
    constexpr int leastSide = 2 * corner + 1;
    const QSize plate = size().shrunkBy(margins()).boundedTo({leastSide, leastSide});
    QPainter painter(this);
    // Not the widget's own, which knows nothing of a picture that it is drawn into.
    const double scale = painter.combinedTransform().m11();
    if (tile_.size() != tileSize(plate, scale)) tile_ = drawTile(plate, scale);

    const auto reach = [](int side) { return margin + std::min(corner, side / 2); };
    const QMargins target(reach(plate.width()), reach(plate.height()), reach(plate.width()), reach(plate.height()));
    qDrawBorderPixmap(&painter, rect(), target, tile_, tile_.rect(), (QMarginsF(target) * scale).toMargins());
}

}  // namespace quillmere
