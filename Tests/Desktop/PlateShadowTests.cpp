#include "Tests/Desktop/DesktopTest.h"

#include <chrono>

namespace quillmere::support {

namespace {

constexpr int shadowRoom = 32;

class PlateShadowTest : public DesktopTest {
protected:
    /// The screen with the plate in full, over a window of one colour.
    void showPlateOver(QColor ground, const Desktop::Options& options) {
        startDesktop(options);
        storeConfiguration(configurationText({{.sources = threeSources}}, true, R"({"visibility":"always"})"));
        startWitness(Witness::Size::fullScreen, ground);
        ASSERT_NO_FATAL_FAILURE(startProgram());
        // A busy machine may look too late for one showing.
        ASSERT_TRUE(waitUntil([&] {
            pressShortcut();
            return waitUntil([&] { return takePicture(ground); }, std::chrono::seconds(1));
        }));
    }

    /// How light the screen is beside the plate, `distance` pixels from the
    /// middle of an edge; 0 to 255.
    int lightBelow(int distance) { return light(frame_.center().x(), frame_.bottom() + distance); }
    int lightAbove(int distance) { return light(frame_.center().x(), frame_.top() - distance); }
    int lightAtLeft(int distance) { return light(frame_.left() - distance, frame_.center().y()); }
    int lightAtRight(int distance) { return light(frame_.right() + distance, frame_.center().y()); }

    const QRect& frame() const { return frame_; }
    void keepPicture(const char* name) {
        savePicture(shot_.copy(frame_.adjusted(-60, -60, 60, 60)), artefacts() / "plate" / name);
    }

private:
    /// Whether it caught the plate in full, before its fade.
    bool takePicture(QColor ground) {
        const auto plate = program().plate();
        if (!plate) return false;
        frame_ = plate->frame;
        shot_ = desktop().screen().shot();
        const auto after = program().plate();
        const bool isFull = after && after->opacity == 1;
        return isFull && shot_.pixelColor(frame_.center().x(), frame_.top()) != ground;
    }

    int light(int x, int y) { return shot_.pixelColor(x, y).lightness(); }

    QRect frame_;
    QImage shot_;
};

TEST_F(PlateShadowTest, LiesSoftlyAroundThePlateAndLongestBelowIt) {
    ASSERT_NO_FATAL_FAILURE(showPlateOver(Qt::white, {.hasCompositor = true}));
    keepPicture("shadow.png");
    EXPECT_LT(lightBelow(1), 225);
    EXPECT_LT(lightAtLeft(1), 235);
    EXPECT_EQ(lightAtLeft(1), lightAtRight(1));
    EXPECT_LT(lightAbove(1), 250);
    EXPECT_GT(lightAbove(1), lightBelow(1));
    for (int distance = 1; distance < shadowRoom + 8; ++distance)
        EXPECT_LE(lightBelow(distance), lightBelow(distance + 1)) << distance << " below";
    EXPECT_EQ(lightBelow(shadowRoom + 1), 255) << "it ends with its room";
    EXPECT_GE(lightBelow(shadowRoom), 252) << "and not with an edge";
}

TEST_F(PlateShadowTest, NeedsACompositor) {
    ASSERT_NO_FATAL_FAILURE(showPlateOver(Qt::white, {.hasCompositor = false}));
    for (int distance = 1; distance <= shadowRoom; ++distance) {
        EXPECT_EQ(lightBelow(distance), 255);
        EXPECT_EQ(lightAtLeft(distance), 255);
    }
}

TEST_F(PlateShadowTest, IsTheOnlyOneWhereTheCompositorDrawsShadowsToo) {
    ASSERT_NO_FATAL_FAILURE(showPlateOver(Qt::white, {.hasCompositor = true, .compositorDrawsShadows = true}));
    EXPECT_LT(lightBelow(1), 225);
    for (int distance = shadowRoom + 1; distance < shadowRoom + 20; ++distance)
        EXPECT_EQ(lightBelow(distance), 255);
}

TEST_F(PlateShadowTest, LeavesThePlateWhereItIs) {
    ASSERT_NO_FATAL_FAILURE(showPlateOver(Qt::white, {.hasCompositor = true}));
    QRect expected(0, 0, 244, 192);
    expected.moveCenter(QRect(QPoint(), desktop().connection().screenSize()).center());
    EXPECT_EQ(frame(), expected);
}

TEST_F(PlateShadowTest, DarkensADarkGroundToo) {
    const QColor ground(60, 60, 60);
    ASSERT_NO_FATAL_FAILURE(showPlateOver(ground, {.hasCompositor = true, .scheme = SettingsPortal::Scheme::dark}));
    keepPicture("shadow-dark.png");
    EXPECT_LT(lightBelow(2), ground.lightness() - 8);
}

}  // namespace

}  // namespace quillmere::support
