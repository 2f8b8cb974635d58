#include "Quillmere/Platform/Linux/Plate/WorkArea.h"

#include <algorithm>
#include <array>
#include <limits>

namespace quillmere {

namespace {

constexpr std::size_t edgeCount = 4;
constexpr std::size_t partialSize = 3 * edgeCount;

/// No screen is longer, and sums of two stay within an int.
int length(std::uint32_t value) {
    constexpr std::uint32_t longest = std::numeric_limits<std::int16_t>::max();
    return static_cast<int>(std::min(value, longest));
}

/// A claim reaches from an edge of the whole X screen to the panel's inner
/// edge, so that of a panel between two monitors covers the outer one as well.
bool isOfThisMonitor(int depth, int monitorDepth) {
    return depth > 0 && 2 * depth < monitorDepth;
}

}  // namespace

void WorkArea::remove(std::span<const std::uint32_t> strut) {
    if (strut.size() != edgeCount && strut.size() != partialSize) return;
    std::array<int, partialSize> claim{0, 0, 0, 0, 0, length(~0U), 0, length(~0U), 0, length(~0U), 0, length(~0U)};
    std::ranges::transform(strut, claim.begin(), length);
    const auto [left, right, top, bottom, leftBegin, leftEnd, rightBegin, rightEnd, topBegin, topEnd, bottomBegin,
                bottomEnd] = claim;
    const int width = root_.width();
    const int height = root_.height();

    const QRect atLeft = QRect(QPoint(0, leftBegin), QPoint(left - 1, leftEnd)) & monitor_;
    const QRect atRight = QRect(QPoint(width - right, rightBegin), QPoint(width - 1, rightEnd)) & monitor_;
    const QRect atTop = QRect(QPoint(topBegin, 0), QPoint(topEnd, top - 1)) & monitor_;
    const QRect atBottom = QRect(QPoint(bottomBegin, height - bottom), QPoint(bottomEnd, height - 1)) & monitor_;
    if (isOfThisMonitor(atLeft.width(), monitor_.width())) free_.setLeft(std::max(free_.left(), atLeft.right() + 1));
    if (isOfThisMonitor(atRight.width(), monitor_.width())) free_.setRight(std::min(free_.right(), atRight.left() - 1));
    if (isOfThisMonitor(atTop.height(), monitor_.height())) free_.setTop(std::max(free_.top(), atTop.bottom() + 1));
    if (isOfThisMonitor(atBottom.height(), monitor_.height()))
        free_.setBottom(std::min(free_.bottom(), atBottom.top() - 1));
}

}  // namespace quillmere
