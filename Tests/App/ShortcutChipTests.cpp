#include "Quillmere/Settings/ShortcutChip.h"
#include "Tests/App/WindowContent.h"

#include <gtest/gtest.h>

#include <QFontMetricsF>

namespace quillmere {
namespace {

/// What is drawn into a chip, without its edge, enlarged.
class ShortcutChipTest : public testing::Test {
protected:
    static constexpr int scale = 8;
    static constexpr QMargins edge{3 * scale, 3 * scale, 3 * scale, 3 * scale};

    ShortcutChipTest() {
        chip.setTitle(QStringLiteral("🌐 Fn"));
        chip.resize(chip.sizeHint());
        image = enlarged(chip).copy(QRect(QPoint(), chip.size() * scale).marginsRemoved(edge));
        ground = image.pixelColor(0, image.height() / 2);
    }
    bool isInk(int x, int y) const { return !isSame(image.pixelColor(x, y), ground); }
    bool hasInk(int x) const {
        for (int y = 0; y < image.height(); ++y)
            if (isInk(x, y)) return true;
        return false;
    }
    /// From the first ink on until the gap before the letters.
    QRect globe() const {
        int left = 0;
        while (left < image.width() && !hasInk(left))
            ++left;
        int right = left;
        while (right < image.width() && hasInk(right))
            ++right;
        QRect frame(left, 0, right - left, image.height());
        const auto isEmpty = [&](int y) {
            for (int x = frame.left(); x <= frame.right(); ++x)
                if (isInk(x, y)) return false;
            return true;
        };
        while (!frame.isEmpty() && isEmpty(frame.top()))
            frame.setTop(frame.top() + 1);
        while (!frame.isEmpty() && isEmpty(frame.bottom()))
            frame.setBottom(frame.bottom() - 1);
        return frame;
    }

    ShortcutChip chip;
    QImage image;
    QColor ground;
};

TEST_F(ShortcutChipTest, TheGlobeIsACircleOfTwelvePointsThatIsTheSameFromAllSides) {
    const QRect frame = globe();
    // With its line, which is a point wide and may begin between two pixels.
    EXPECT_NEAR(frame.width(), 13 * scale, 1);
    EXPECT_NEAR(frame.height(), 13 * scale, 1);
    int differences = 0;
    for (int x = 0; x < frame.width(); ++x) {
        for (int y = 0; y < frame.height(); ++y) {
            const bool isHere = isInk(frame.left() + x, frame.top() + y);
            if (isHere != isInk(frame.right() - x, frame.top() + y)) ++differences;
            if (isHere != isInk(frame.left() + x, frame.bottom() - y)) ++differences;
        }
    }
    EXPECT_LT(differences, frame.width() * frame.height() / 20);
}

TEST_F(ShortcutChipTest, TheGlobeAndItsLettersAreInTheMiddle) {
    const double content = 12 + QFontMetricsF(chip.font()).horizontalAdvance(" Fn");
    const double left = (chip.width() - content) / 2;
    const QRect frame = globe();
    EXPECT_NEAR(frame.left() + frame.width() / 2.0, (left + 6) * scale - edge.left(), 2);
    EXPECT_NEAR(frame.top() + frame.height() / 2.0, image.height() / 2.0, scale / 2.0);
}

}  // namespace
}  // namespace quillmere
