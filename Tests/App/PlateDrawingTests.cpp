#include "Quillmere/Platform/Linux/Plate/PlateDrawing.h"
#include "Quillmere/Platform/Linux/Plate/PlateShadow.h"

#include <QPainter>
#include <QWidget>

#include <gtest/gtest.h>

#include <array>

namespace quillmere {
namespace {

constexpr QSize plateSize(100, 80);
constexpr int room = PlateShadow::margin;

/// A plain red plate with its shadow, as a panel without a window has it.
class Sheet {
public:
    Sheet() : shadow_(nullptr), plate_(&shadow_) {
        shadow_.setDrawn(true);
        shadow_.resize(plateSize.grownBy(PlateShadow::margins()));
        plate_.setGeometry(QRect(QPoint(room, room), plateSize));
        plate_.setAutoFillBackground(true);
        plate_.setPalette(QPalette(Qt::red));
    }

    QImage drawn(int scale) { return drawWidget(shadow_, scale); }

private:
    PlateShadow shadow_;
    QWidget plate_;
};

TEST(PlateDrawing, HasTheWidgetInThePixelsOfTheDisplay) {
    Sheet sheet;
    for (const int scale : {1, 2, 3}) {
        const QImage picture = sheet.drawn(scale);
        const QRect plate(room * scale, room * scale, plateSize.width() * scale, plateSize.height() * scale);
        EXPECT_EQ(picture.size(), plateSize.grownBy(PlateShadow::margins()) * scale);
        EXPECT_EQ(picture.pixelColor(plate.topLeft()), Qt::red) << scale;
        EXPECT_EQ(picture.pixelColor(plate.bottomRight()), Qt::red) << scale;
        EXPECT_NE(picture.pixelColor(plate.topLeft() - QPoint(1, 1)), Qt::red) << scale;
        EXPECT_NE(picture.pixelColor(plate.bottomRight() + QPoint(1, 1)), Qt::red) << scale;
    }
}

TEST(PlateDrawing, HasAShadowAsSharpAsTheDisplay) {
    Sheet sheet;
    const QImage coarse = sheet.drawn(1);
    const QImage fine = sheet.drawn(2);
    const int x = coarse.width() / 2;
    for (int y = room + plateSize.height() + 1; y < coarse.height() - 1; ++y) {
        const int upper = fine.pixelColor(2 * x, 2 * y).alpha();
        const int lower = fine.pixelColor(2 * x, 2 * y + 1).alpha();
        EXPECT_GE(upper, lower) << y;
        EXPECT_NEAR(coarse.pixelColor(x, y).alpha(), (upper + lower) / 2.0, 1) << y;
    }
    int steps = 0;
    for (int y = 2 * (room + plateSize.height()); y < fine.height(); ++y)
        steps += fine.pixelColor(2 * x, y).alpha() != fine.pixelColor(2 * x, y - 1).alpha() ? 1 : 0;
    EXPECT_GT(steps, room) << "more than a coarse one has rows";
}

TEST(PlateDrawing, IsClearWhereNothingIs) {
    Sheet sheet;
    for (const int scale : {1, 2})
        EXPECT_EQ(sheet.drawn(scale).pixelColor(0, 0).alpha(), 0);
}

TEST(PlateDrawing, FadesTheWholePictureAndLeavesNothingOfTheLastOne) {
    QImage picture(2, 1, QImage::Format_ARGB32_Premultiplied);
    picture.setDevicePixelRatio(2);
    picture.setPixelColor(0, 0, QColor(255, 0, 0, 255));
    picture.setPixelColor(1, 0, QColor(0, 0, 0, 100));
    QImage target(2, 1, QImage::Format_ARGB32_Premultiplied);
    for (const auto& [alpha, first, second] :
         {std::array{1.0, 255.0, 100.0}, {0.5, 127.5, 50.0}, {0.25, 63.75, 25.0}, {0.0, 0.0, 0.0}}) {
        target.fill(Qt::white);
        copyFaded(picture, alpha, target);
        EXPECT_NEAR(target.pixelColor(0, 0).alpha(), first, 1) << alpha;
        EXPECT_NEAR(target.pixelColor(1, 0).alpha(), second, 1) << alpha;
        EXPECT_EQ(target.pixelColor(0, 0).green(), 0) << alpha;
    }
}

}  // namespace
}  // namespace quillmere
