#include "Quillmere/Platform/RoundedRegion.h"

#include <algorithm>
#include <cmath>

namespace quillmere {

QRegion roundedRegion(const QRect& rect, double radius) {
    radius = std::min(radius, rect.height() / 2.0);
    const auto insetAt = [&](int y) {
        const double fromEdge = std::min(y, rect.height() - 1 - y) + 0.5;
        const double rise = std::max(radius - fromEdge, 0.0);
        return static_cast<int>(std::lround(radius - std::sqrt(radius * radius - rise * rise)));
    };
    QRegion region;
    for (int y = 0; y < rect.height(); ++y) {
        const int inset = insetAt(y);
        region += QRect(rect.x() + inset, rect.y() + y, rect.width() - 2 * inset, 1);
    }
    return region;
}

}  // namespace quillmere
