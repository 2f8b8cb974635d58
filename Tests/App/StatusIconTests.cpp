#include "Quillmere/Icons/StatusIcon.h"
#include "Tests/Support/Contrast.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace quillmere {
namespace {

constexpr int scale = 40;

/// A bar as it must appear in a 20 by 20 rectangle, y downwards, with the
/// direction of its length as an angle from the x axis, clockwise.
struct Bar {
    double x;
    double y;
    double degrees;
    double length;
    double thickness;
};

constexpr std::array bars{
    Bar{4.4156, 11.6564, -99.000, 6.3995, 4.40},  Bar{7.4392, 5.8088, -35.975, 5.7200, 3.85},
    Bar{13.3447, 5.9038, 27.051, 5.0405, 3.30},   Bar{15.5844, 10.6302, 90.076, 4.3610, 2.75},
    Bar{12.7440, 14.1912, 153.101, 3.6815, 2.20},
};

class StatusIconTest : public testing::Test {
protected:
    StatusIconTest() : image_(20 * scale, 20 * scale, QImage::Format_ARGB32) {
        image_.fill(Qt::transparent);
        QPainter painter(&image_);
        StatusIcon::draw(painter, QRectF(0, 0, 20 * scale, 20 * scale), Qt::black);
    }

    bool isFilled(double x, double y) const {
        return image_.pixelColor(static_cast<int>(x * scale), static_cast<int>(y * scale)).alpha() > 127;
    }

    /// A point of the bar's own frame: along its length and across it.
    bool isFilled(const Bar& bar, double along, double across) const {
        const double angle = bar.degrees * std::numbers::pi / 180;
        return isFilled(bar.x + along * std::cos(angle) - across * std::sin(angle),
                        bar.y + along * std::sin(angle) + across * std::cos(angle));
    }

    QImage image_;
};

TEST_F(StatusIconTest, EachBarHasItsPlaceAngleLengthAndThickness) {
    constexpr double hair = 0.08;
    for (const auto& bar : bars) {
        SCOPED_TRACE(bar.thickness);
        EXPECT_TRUE(isFilled(bar, 0, 0));
        EXPECT_TRUE(isFilled(bar, bar.length / 2 - hair, 0));
        EXPECT_TRUE(isFilled(bar, -bar.length / 2 + hair, 0));
        EXPECT_TRUE(isFilled(bar, 0, bar.thickness / 2 - hair));
        EXPECT_TRUE(isFilled(bar, 0, -bar.thickness / 2 + hair));
        EXPECT_FALSE(isFilled(bar, 0, bar.thickness / 2 + hair));
        EXPECT_FALSE(isFilled(bar, 0, -bar.thickness / 2 - hair));
    }
}

TEST_F(StatusIconTest, TheCornersAreRound) {
    const auto& bar = bars.front();
    const double corner = 0.4 * bar.thickness;
    // Half-way between the corner itself and the arc.
    const double outside = corner * (1 - 1 / std::sqrt(2.0)) / 2;
    EXPECT_FALSE(isFilled(bar, bar.length / 2 - outside, bar.thickness / 2 - outside));
    EXPECT_TRUE(isFilled(bar, bar.length / 2 - 3 * outside, bar.thickness / 2 - 3 * outside));
}

TEST_F(StatusIconTest, TheDrawingKeepsToItsRectangle) {
    QImage image(200, 100, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    StatusIcon::draw(painter, QRectF(100, 0, 100, 100), Qt::black);
    painter.end();
    for (int y = 0; y < 100; ++y) {
        for (int x = 0; x < 100; ++x)
            ASSERT_EQ(image.pixelColor(x, y).alpha(), 0);
    }
    EXPECT_EQ(image.pixelColor(100 + static_cast<int>(bars[0].x * 5), static_cast<int>(bars[0].y * 5)).alpha(), 255);
}

TEST_F(StatusIconTest, EverySizeIsDrawnByItselfAtBothScales) {
    const auto icon = StatusIcon::make(Qt::white, false, false);
    for (const int side : {16, 18, 20, 22, 24, 27, 32, 48, 64}) {
        for (const int ratio : {1, 2}) {
            const auto pixmap = icon.pixmap(QSize(side, side), ratio);
            ASSERT_EQ(pixmap.size(), QSize(side * ratio, side * ratio));
            QImage plain(pixmap.size(), QImage::Format_ARGB32_Premultiplied);
            plain.fill(Qt::transparent);
            QPainter painter(&plain);
            StatusIcon::draw(painter, QRectF(plain.rect()), Qt::white);
            painter.end();
            const auto drawn = pixmap.toImage();
            int inked = 0;
            for (int y = 0; y < plain.height(); ++y) {
                for (int x = 0; x < plain.width(); ++x) {
                    if (plain.pixelColor(x, y).alpha() < 255) continue;
                    ++inked;
                    ASSERT_EQ(drawn.pixelColor(x, y), QColor(Qt::white)) << side << " at " << ratio;
                }
            }
            EXPECT_GT(inked, 20 * ratio);
        }
    }
}

/// How many pixels of the icon on this ground differ from it enough to be
/// told.
int legiblePixels(const QIcon& icon, QColor ground, int side) {
    QImage image(side, side, QImage::Format_RGB32);
    image.fill(ground);
    QPainter painter(&image);
    icon.paint(&painter, image.rect());
    painter.end();
    int count = 0;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x)
            count += support::contrast(image.pixelColor(x, y), ground) >= support::iconContrast ? 1 : 0;
    }
    return count;
}

TEST_F(StatusIconTest, TheIconIsToldFromALightGroundAndFromADarkOneWhateverItsInk) {
    for (const QColor ground :
         {QColor(255, 255, 255), QColor(0xe8, 0xe8, 0xe7), QColor(0x35, 0x35, 0x35), QColor(0, 0, 0)}) {
        for (const QColor ink : {QColor(Qt::black), QColor(Qt::white)}) {
            for (const int side : {16, 22, 24, 44}) {
                EXPECT_GT(legiblePixels(StatusIcon::make(ink, false, false), ground, side), side * side / 10)
                    << ink.name().toStdString() << " on " << ground.name().toStdString() << ", " << side;
            }
        }
    }
}

TEST_F(StatusIconTest, TraysFindTheirUsualSizes) {
    const auto sizes = StatusIcon::make(Qt::black, false, false).availableSizes();
    for (const int side : {16, 22, 24, 32, 48, 64})
        EXPECT_TRUE(sizes.contains(QSize(side, side))) << side;
}

TEST_F(StatusIconTest, TheIconIsNamedOnceTheIconThemesHaveIt) {
    const QTemporaryDir data;
    qputenv("XDG_DATA_HOME", data.path().toLocal8Bit());
    EXPECT_EQ(StatusIcon::make(Qt::black, false, true).name(), "");
    const QDir folder(data.path() + "/icons/hicolor/symbolic/apps");
    ASSERT_TRUE(folder.mkpath("."));
    for (const char* name : {"quillmere-symbolic", "quillmere-inactive-symbolic"})
        ASSERT_TRUE(QFile::copy(QStringLiteral(QUILLMERE_ICONS "/%1.svg").arg(name), folder.filePath(name) + ".svg"));
    EXPECT_EQ(StatusIcon::make(Qt::black, false, true).name(), "quillmere-symbolic");
    EXPECT_EQ(StatusIcon::make(Qt::black, true, true).name(), "quillmere-inactive-symbolic");
    EXPECT_EQ(StatusIcon::make(Qt::black, false, false).name(), "") << "the tray would show it black";
    qunsetenv("XDG_DATA_HOME");
}

TEST_F(StatusIconTest, TheMenuBarGetsABlackTemplateAtTheDesignsOwnScale) {
    const auto icon = StatusIcon::makeTemplate(false);
    EXPECT_TRUE(icon.isMask());
    EXPECT_EQ(icon.availableSizes(), (QList<QSize>{{18, 18}, {36, 36}}));
    for (const int side : {18, 36}) {
        const auto drawn = icon.pixmap(QSize(side, side), 1.0).toImage().convertToFormat(QImage::Format_ARGB32);
        // The 20 points of the design, less a margin of one on every side.
        QImage design(side / 18 * 20, side / 18 * 20, QImage::Format_ARGB32_Premultiplied);
        design.fill(Qt::transparent);
        QPainter painter(&design);
        StatusIcon::draw(painter, QRectF(design.rect()), Qt::black);
        painter.end();
        const int margin = side / 18;
        EXPECT_EQ(drawn, design.convertToFormat(QImage::Format_ARGB32).copy(margin, margin, side, side)) << side;
    }
    EXPECT_FALSE(StatusIcon::make(Qt::black, false, false).isMask());
}

TEST_F(StatusIconTest, TheTemplateIsDimmedWhenAsked) {
    const auto strongest = [](const QIcon& icon) {
        const QImage image = icon.pixmap(QSize(36, 36), 1.0).toImage();
        int alpha = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                alpha = std::max(alpha, image.pixelColor(x, y).alpha());
        return alpha;
    };
    EXPECT_EQ(strongest(StatusIcon::makeTemplate(false)), 255);
    EXPECT_EQ(strongest(StatusIcon::makeTemplate(true)), 102);
}

TEST_F(StatusIconTest, TheIconHasTheGivenColorAndIsDimmedWhenAsked) {
    const auto middle = [](const QIcon& icon) {
        const auto image = icon.pixmap(QSize(64, 64), 1.0).toImage();
        return image.pixelColor(static_cast<int>(bars[0].x * 3.2), static_cast<int>(bars[0].y * 3.2));
    };
    const QColor full = middle(StatusIcon::make(Qt::white, false, false));
    EXPECT_EQ(full, QColor(255, 255, 255, 255));
    const QColor dimmed = middle(StatusIcon::make(Qt::white, true, false));
    EXPECT_LT(dimmed.alpha(), 140);
    EXPECT_GT(dimmed.alpha(), 60);
    EXPECT_EQ(middle(StatusIcon::make(Qt::black, false, false)), QColor(0, 0, 0, 255));
}

}  // namespace
}  // namespace quillmere
