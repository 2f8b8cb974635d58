#include "Quillmere/Icons/AppIcon.h"

#include <QImage>
#include <QPixmap>

#include <gtest/gtest.h>

namespace quillmere {

namespace {

constexpr QRgb brown = qRgb(0xa8, 0x4e, 0x2c);

TEST(AppIcon, IsSharpInTheSizesThatTaskBarsUse) {
    const QList<QSize> sizes = AppIcon::make().availableSizes();
    for (const int side : {16, 24, 32, 48, 64, 128})
        EXPECT_TRUE(sizes.contains(QSize(side, side))) << side;
}

TEST(AppIcon, IsAWhiteSpiralOnABrownRoundedSquare) {
    const QImage image = AppIcon::make().pixmap(128, 128).toImage();
    EXPECT_EQ(qAlpha(image.pixel(9, 9)), 0) << "the corner is round";
    EXPECT_EQ(image.pixel(64, 12), brown) << "the upper edge";
    EXPECT_EQ(image.pixel(64, 64), brown) << "within the spiral";
    // The first bar's middle: the leftmost of the spiral, a little below the centre.
    EXPECT_EQ(image.pixel(37, 72), qRgb(255, 255, 255));
}

}  // namespace

}  // namespace quillmere
