#include "Quillmere/Palette.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <QTest>

#include <array>
#include <cmath>
#include <ostream>

namespace quillmere {
namespace {

struct NamedColor {
    const char* name;
    const DynamicColor& (*color)();
    std::array<int, 3> light;
    std::array<int, 3> dark;
    double lightAlpha = 1;
    double darkAlpha = 1;
};

void PrintTo(const NamedColor& named, std::ostream* out) {
    *out << named.name;
}

class PaletteColor : public testing::TestWithParam<NamedColor> {};

void expectColor(const QColor& color, const std::array<int, 3>& components, double alpha) {
    EXPECT_EQ((std::array{color.red(), color.green(), color.blue()}), components);
    EXPECT_NEAR(color.alphaF(), alpha, 1e-4);
}

TEST_P(PaletteColor, HasOneValueForLightAndOneForDark) {
    const auto& [name, color, light, dark, lightAlpha, darkAlpha] = GetParam();
    expectColor(color().resolved(false), light, lightAlpha);
    expectColor(color().resolved(true), dark, darkAlpha);
}

INSTANTIATE_TEST_SUITE_P(
    Palette, PaletteColor,
    testing::Values(NamedColor{"window", Palette::window, {255, 255, 255}, {27, 29, 34}},
                    NamedColor{"card", Palette::card, {248, 247, 244}, {38, 40, 45}},
                    NamedColor{"border", Palette::border, {228, 226, 220}, {58, 61, 68}},
                    NamedColor{"chip", Palette::chip, {255, 255, 255}, {51, 54, 61}},
                    NamedColor{"accent", Palette::accent, {168, 78, 44}, {222, 107, 60}},
                    NamedColor{"selection", Palette::selection, {27, 29, 34}, {236, 235, 231}, 0.12, 0.16},
                    NamedColor{"muted", Palette::muted, {95, 99, 107}, {163, 166, 173}},
                    NamedColor{"label", labelColor, {0, 0, 0}, {255, 255, 255}, 0.85, 0.85},
                    NamedColor{"clear", Palette::clear, {0, 0, 0}, {0, 0, 0}, 0, 0}),
    [](const auto& info) { return std::string(info.param.name); });

/// Draws light again for whoever comes next.
class PlateViewTest : public testing::Test {
protected:
    void TearDown() override { Palette::setDark(false); }

    static QImage render(QWidget& widget) {
        QImage image(widget.size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        widget.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
        return image.convertToFormat(QImage::Format_ARGB32);
    }
};

TEST_F(PlateViewTest, AnotherOpacityKeepsBothColors) {
    const auto color = Palette::card().withAlpha(0.5);
    expectColor(color.resolved(false), {248, 247, 244}, 0.5);
    expectColor(color.resolved(true), {38, 40, 45}, 0.5);
}

TEST_F(PlateViewTest, AClearStrokeDrawsNoOutline) {
    PlateView view(Palette::card(), Palette::clear(), 0);
    view.resize(40, 20);
    EXPECT_EQ(view.borderWidth(), 0);
    const auto image = render(view);
    EXPECT_EQ(image.pixelColor(0, 10), QColor(248, 247, 244));
    EXPECT_EQ(image.pixelColor(20, 0), QColor(248, 247, 244));
}

TEST_F(PlateViewTest, AStrokeIsOnePointInsideTheEdge) {
    PlateView view(Palette::card(), Palette::border(), 8);
    view.resize(40, 40);
    EXPECT_EQ(view.borderWidth(), 1);
    const auto image = render(view);
    const QColor border(228, 226, 220);
    const QColor card(248, 247, 244);
    for (const QPoint edge : {QPoint(20, 0), QPoint(0, 20), QPoint(39, 20), QPoint(20, 39)}) {
        EXPECT_EQ(image.pixelColor(edge), border) << edge.x() << ", " << edge.y();
    }
    for (const QPoint inside : {QPoint(20, 1), QPoint(1, 20), QPoint(38, 20), QPoint(20, 38)}) {
        EXPECT_EQ(image.pixelColor(inside), card) << inside.x() << ", " << inside.y();
    }
}

TEST_F(PlateViewTest, TheCornersAreRound) {
    PlateView view(Palette::card(), Palette::clear(), 12);
    view.resize(60, 60);
    const auto image = render(view);
    EXPECT_EQ(image.pixelColor(0, 0).alpha(), 0);
    EXPECT_EQ(image.pixelColor(59, 59).alpha(), 0);
    // Where the circle of the radius crosses the diagonal.
    const int crossing = static_cast<int>(12 - 12 / std::sqrt(2.0));
    EXPECT_EQ(image.pixelColor(crossing - 1, crossing - 1).alpha(), 0);
    EXPECT_EQ(image.pixelColor(crossing + 1, crossing + 1).alpha(), 255);
    EXPECT_EQ(image.pixelColor(30, 0).alpha(), 255);
}

TEST_F(PlateViewTest, ARadiusBeyondHalfTheSizeDrawsACapsule) {
    PlateView view(Palette::card(), Palette::clear(), 100);
    view.resize(60, 20);
    const auto image = render(view);
    EXPECT_EQ(image.pixelColor(30, 0).alpha(), 255);
    EXPECT_EQ(image.pixelColor(0, 0).alpha(), 0);
}

TEST_F(PlateViewTest, TurningDarkRedrawsAVisibleViewInDarkColors) {
    QWidget window;
    window.resize(40, 40);
    PlateView view(Palette::card(), Palette::clear(), 0, &window);
    view.resize(40, 40);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window, 10'000));

    struct PaintCounter : QObject {
        int count = 0;
        bool eventFilter(QObject*, QEvent* event) override {
            if (event->type() == QEvent::Paint) ++count;
            return false;
        }
    } paints;
    view.installEventFilter(&paints);
    Palette::setDark(true);
    EXPECT_TRUE(Palette::isDark());
    EXPECT_TRUE(QTest::qWaitFor([&] { return paints.count > 0; }, 10'000));
    EXPECT_EQ(render(view).pixelColor(20, 20), QColor(38, 40, 45));
}

}  // namespace
}  // namespace quillmere
